#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

// Prints the open category as it stands in the grid: the title, a rule, then
// for each item one labelled line per filled cell and a rule after it.
void frmMain::cmdPrint_Click() {
    forms::PrinterPort& printer = platform.printer;
    try {
        printer.Print(lblCategory.Caption(), true);
        printer.Print("", false);
        const std::string rule(77, '-');
        printer.Print(rule, false);
        printer.Print("", false);
        printer.Print("", false);
        if (lstCategory.Text().empty()) {
            Message("Error: No category selected to print.");
        } else {
            for (int i = 1; i < FG1.Rows(); ++i) {
                for (int j = 0; j < FG1.Cols(); ++j) {
                    const std::string text(FG1.TextMatrix(i, j));
                    if (text.empty()) continue;
                    printer.Print(std::string(FG1.TextMatrix(0, j)) + ": ", true);
                    printer.Print(text, false);
                    printer.Print("", false);
                }
                printer.Print(rule, false);
            }
            printer.EndDoc();
        }
    } catch (const Failure&) {
    }
    try {
        printer.EndDoc();
    } catch (const Failure&) {
    }
    Message("Category Printing.");
}

} // namespace qm
