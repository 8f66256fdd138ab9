// Resource and control identifiers. Other processes and the tests address the
// windows by these numbers, so they never change.
#pragma once

#define IDI_APP_LARGE 1
#define IDI_APP_SMALL 2

#define IDM_FRAME 1
#define IDM_FILES_POPUP 2
#define IDM_SCHEDULE_POPUP 3

#define IDD_MAIN 1
#define IDD_STOP 13
#define IDD_PASSWORD_SETTINGS 16
#define IDD_PASSWORD 17
#define IDD_TEXT_EDIT 20
#define IDD_BANNER 21

// Controls of the small dialogs.
#define IDC_STOP_LIST 101
#define IDC_PASSWORD_EDIT 101
#define IDC_LOCK_HARDWARE 102
#define IDC_LOCK_FILES 103
#define IDC_LOCK_SCHEDULING 104
#define IDC_LOCK_EXIT 105
#define IDC_TEXT_EDIT 100
#define IDC_BANNER_TEXT 100

// Main window controls.
#define IDC_FILES_LIST 1001
#define IDC_SCHEDULE_LIST 1002
#define IDC_INFO_LINE 1090
#define IDC_RECORD_STATUS 1091
#define IDC_PLAY_STATUS 1092
#define IDC_RECORD_METER 1093
#define IDC_PLAY_METER 1094
#define IDC_CLOCK 1095

// Commands (menu identifiers); 111, 112 and 119 are also the buttons.
#define CM_NEW_FILE 101
#define CM_RENAME_FILE 102
#define CM_DELETE_FILE 103
#define CM_FILE_PROPERTIES 109
#define IDC_PLAY 111
#define IDC_RECORD 112
#define CM_PLAY_CONTROL 118
#define IDC_STOP 119
#define CM_HARDWARE_SETTINGS 121
#define CM_PASSWORD_SETTINGS 122
#define CM_PRINT_SCHEDULES 141
#define CM_LOAD_PACKED_SCHEDULE 151
#define CM_SAVE_PACKED_SCHEDULE 152
#define CM_LOAD_WAV_FILE 159
#define CM_OPEN_WINDOW 197
#define CM_CLOSE_WINDOW 198
#define CM_EXIT 199
#define CM_PLAY_ONCE 201
#define CM_PLAY_REGULAR 202
#define CM_RECORD_ONCE 203
#define CM_RECORD_REGULAR 204
#define CM_SCHEDULED_DELETE 209
#define CM_DELETE_SCHEDULE_ITEM 211
#define CM_EDIT_SCHEDULE_ITEM 221
#define CM_HELP_CONTENTS 901
#define CM_ABOUT 902
#define CM_WEB_FIRST 911
