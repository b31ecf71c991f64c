#pragma once
// The printer of view printing: one for the process, as the platform's printer choice sets it up
// and the print form shows it. It starts on the system's default printer; where there is none,
// only a PDF file can be printed to until one is chosen.

class QPrinter;
class QString;

namespace zentrail {

QPrinter& ViewPrinter();
// The printer's name as the print form shows it: the PDF file for PDF output.
QString ViewPrinterName();

}  // namespace zentrail
