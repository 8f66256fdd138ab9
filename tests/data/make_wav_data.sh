#!/usr/bin/env bash
# Regenerates the WAV test files in tests/data/wav with sox, and next to each
# FILE.wav the samples sox itself decodes from it, FILE.s32 (raw signed 32-bit
# little-endian, interleaved). The WAV tests compare the program's sources
# with these decodings sample by sample. Run it from anywhere; the files are
# committed so that the tests need no sox.
set -euo pipefail
out="$(cd "$(dirname "$0")" && pwd)/wav"
mkdir -p "$out"
cd "$out"
rm -f ./*.wav ./*.s32

# NAME CHANNELS DURATION SOX-OUTPUT-OPTIONS...: a tone per channel (440 Hz
# left, 1250 Hz right) with some noise, so that every bit of the samples moves
# and the channels differ. -R keeps the noise the same on each run.
make() {
  local name=$1 channels=$2 seconds=$3 mix
  shift 3
  if [ "$channels" = 1 ]; then mix="1v0.45,2v0.45,3v0.1"; else mix="1v0.85,3v0.1 2v0.85,3v0.1"; fi
  sox -V1 -R -n -c "$channels" "$@" "$name.wav" synth "$seconds" sine 440 sine 1250 whitenoise remix $mix
}

make pcm_u8_mono_8000 1 0.1 -r 8000 -b 8 -e unsigned-integer
make pcm_s16_stereo_44100 2 0.02 -r 44100 -b 16
# Plain PCM headers (tag 1), not the extensible form sox uses above 16 bits.
make pcm_s24_stereo_48000 2 0.01 -t wavpcm -r 48000 -b 24
make pcm_s32_stereo_192000 2 0.005 -t wavpcm -r 192000 -b 32
make ima_adpcm_mono_8000 1 0.2 -r 8000 -e ima-adpcm
make ms_adpcm_stereo_11025 2 0.1 -r 11025 -e ms-adpcm
make alaw_stereo_8000 2 0.1 -r 8000 -e a-law
make ulaw_mono_8000 1 0.2 -r 8000 -e u-law

# The same 16-bit file with odd-sized LIST chunks around its fmt chunk.
make pcm_s16_mono_16000 1 0.03 -r 16000 -b 16
python3 - <<'PY'
import struct
data = open('pcm_s16_mono_16000.wav', 'rb').read()
assert data[:4] == b'RIFF' and data[8:12] == b'WAVE' and data[12:16] == b'fmt '
fmt_end = 20 + struct.unpack('<I', data[16:20])[0]
fmt, rest = data[12:fmt_end], data[fmt_end:]
info = b'INFOICMT' + struct.pack('<I', 5) + b'sox!\0'   # 17 bytes: odd, so a pad byte follows
lst = b'LIST' + struct.pack('<I', len(info)) + info + b'\0'
def riff(body):
    return b'RIFF' + struct.pack('<I', len(body) + 4) + b'WAVE' + body
open('list_before_fmt.wav', 'wb').write(riff(lst + fmt + rest))
open('list_after_fmt.wav', 'wb').write(riff(fmt + lst + rest))
PY

for f in ./*.wav; do
  case "$f" in
    ./list_*) sox pcm_s16_mono_16000.wav -t s32 -L "${f%.wav}.s32" ;;
    *) sox "$f" -t s32 -L "${f%.wav}.s32" ;;
  esac
done
ls -l "$out"
