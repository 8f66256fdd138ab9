// Printing the schedule listing on a printer the user chooses, through the
// system print dialog and GDI. The page layout itself is print_layout's.
#pragma once

#include <windows.h>

#include <vector>

#include "schedule/print_layout.h"

namespace vantr {

// The name of the print job, as the spooler and the printer show it.
inline constexpr char kPrintDocumentName[] = "Vantorel Print Schedules";

// The system print dialog over owner, with the choices of a selection and of
// page numbers hidden: the chosen printer's device context, or null when the
// user cancels or the dialog fails.
HDC choosePrinter(HWND owner);

// Prints the files as one document on the printer behind dc, which it
// deletes; true when the document reached the spooler whole.
bool printOnPrinter(HDC dc, const std::vector<PrintFile>& files);

}  // namespace vantr
