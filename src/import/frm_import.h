#pragma once
#include <string>
#include <vector>

#include "forms/controls.h"
#include "forms/form.h"
#include "forms/listbox.h"
#include "import/spreadsheet.h"

namespace qm {

class frmMain;

// The preview of a spreadsheet to import: each column of the file with the
// column of the category it goes to, which the user can change, and the name
// of the new category. OK makes the category; Cancel and closing make nothing.
class frmImport {
public:
    frmImport(frmMain& main, spreadsheet::Sheet sheet, const std::string& fileName);
    ~frmImport();

    frmMain& main;
    forms::Form form;
    forms::Label lblFile;
    forms::Label lblColumns;
    forms::ListBox lstColumns;
    forms::Label lblChoice;
    forms::ListBox lstChoices;
    forms::Label lblName;
    forms::TextBox txtName;
    forms::Button cmdOK;
    forms::Button cmdCancel;

    // Where each file column goes (spreadsheet::Choice).
    std::vector<int> choices;

    void lstColumns_Click();
    void lstChoices_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

    // The category's rows from the sheet's, and the message that tells what came in.
    struct Outcome {
        std::vector<const spreadsheet::Sheet::Row*> rows;
        std::vector<std::string> notIn; // one line for each row, or run of rows, that could not
        std::size_t rowsNotIn = 0;
    };
    Outcome Sort() const;

private:
    void listColumns();
    spreadsheet::Sheet sheet_;
    std::vector<std::string> labels_;
    bool listing_ = false;
};

} // namespace qm
