#include "import/frm_import.h"

#include <algorithm>
#include <array>

#include "forms/declaration.h"
#include "forms/failure.h"
#include "forms/grid.h"
#include "forms/utf8.h"
#include "import/columns.h"
#include "mainwindow/frm_main.h"

namespace qm {

using spreadsheet::Sheet;

namespace {

const char* const kFilter = "Spreadsheets saved as text (*.csv;*.txt;*.tsv)|*.csv;*.txt;*.tsv|All Files (*.*)|*.*";
// The rows a category holds below its heading row.
constexpr int kRoom = forms::Grid::kMaxRows - 1;
// Lines of rows that could not come in that a summary names; the rest are counted.
constexpr std::size_t kNamedRows = 20;

// The file's name without its folder and its last extension.
std::string baseName(const std::string& path) {
    std::string name = path.substr(path.find_last_of("/\\") + 1);
    if (const auto dot = name.rfind('.'); dot != std::string::npos && dot > 0) name.erase(dot);
    return name;
}

std::string describe(const Sheet& sheet, const std::string& file) {
    const char* sep = sheet.separator == ';' ? "semicolons" : sheet.separator == '\t' ? "tabs" : "commas";
    const char* enc = sheet.encoding == spreadsheet::Encoding::Windows1252 ? "Windows-1252"
                      : sheet.encoding == spreadsheet::Encoding::Utf8WithMark ? "UTF-8 with a byte-order mark"
                                                                              : "UTF-8";
    const std::size_t rows = sheet.rows.size() - 1;
    return file + ": cells separated by " + sep + ", " + enc + ", " + std::to_string(rows) +
           (rows == 1 ? " row" : " rows") + " below the headings.";
}

std::string plural(std::size_t n, const char* one, const char* many) { return std::to_string(n) + (n == 1 ? one : many); }

} // namespace

// ---- the command ---------------------------------------------------------------------

// Asks for a file, reads it whole and shows its preview; a file that can't be
// read or is no spreadsheet saved as text is told and nothing is made.
void frmMain::mnuImport_Click() {
    if (RefuseKeptIndex()) return;
    const std::optional<std::string> path = platform.dialogs.ShowOpen(kFilter);
    if (!path) return;
    std::string bytes;
    try {
        auto in = platform.files.openRead(*path);
        // Read straight into the text, in one piece where the size is known.
        const auto state = in->state();
        std::size_t have = 0;
        bytes.resize(state ? state->size + 1 : std::size_t{1} << 16);
        for (std::size_t n; (n = in->read(bytes.data() + have, bytes.size() - have)) > 0;)
            if ((have += n) == bytes.size()) bytes.resize(2 * have);
        bytes.resize(have);
    } catch (const forms::Failure&) {
        Message("The file \"" + *path + "\" could not be read. Nothing was imported.");
        return;
    }
    Sheet sheet = spreadsheet::ReadSheet(std::move(bytes));
    if (sheet.problem.empty() && sheet.rows.empty())
        sheet.problem = sheet.unclosedLine ? "The file can't be read: a cell on line " + std::to_string(sheet.unclosedLine) +
                                                 " opens with a double quote that is never closed. Nothing was imported."
                                           : "The file holds no cells: there is nothing to import.";
    if (!sheet.problem.empty()) {
        Message(sheet.problem);
        return;
    }
    import_.reset(); // a preview still open gives way to the new file
    import_ = std::make_unique<frmImport>(*this, std::move(sheet), *path);
    import_->form.setVisible(true);
    import_->lstColumns.TrySetFocus();
}

// ---- the preview ---------------------------------------------------------------------

frmImport::frmImport(frmMain& m, Sheet sheet, const std::string& path)
    : main(m), form(m.platform.runtime, "frmImport"), lblFile(form, nullptr, "lblFile"),
      lblColumns(form, nullptr, "lblColumns"), lstColumns(form, nullptr, "lstColumns"),
      lblChoice(form, nullptr, "lblChoice"), lstChoices(form, nullptr, "lstChoices"), lblName(form, nullptr, "lblName"),
      txtName(form, nullptr, "txtName"), cmdOK(form, nullptr, "cmdOK"), cmdCancel(form, nullptr, "cmdCancel"),
      sheet_(std::move(sheet)) {
    labels_ = spreadsheet::HeadingLabels(sheet_);
    choices = spreadsheet::DefaultChoices(labels_);
    forms::declareWindow(form,
                         {.caption = "Import Spreadsheet", .font = {"MS Sans Serif", 8.25, false}, .clientWidth = 7200,
                          .clientHeight = 4560},
                         [this] { cmdCancel_Click(); });
    auto label = [](forms::Label& l, const std::string& caption, int left, int top, int width, int height, int tab) {
        l.move(left, top, width, height);
        l.setTabIndex(tab);
        l.setCaption(caption);
    };
    label(lblFile, describe(sheet_, path.substr(path.find_last_of("/\\") + 1)), 120, 120, 6960, 450, 0);
    label(lblColumns, "Columns of the file, and where each goes:", 120, 660, 3840, 255, 1);
    lstColumns.move(120, 930, 3840, 2700);
    lstColumns.setTabIndex(2);
    label(lblChoice, "Goes to:", 4080, 660, 3000, 255, 3);
    lstChoices.move(4080, 930, 3000, 2700);
    lstChoices.setTabIndex(4);
    for (int c = 0; c < spreadsheet::kChoices; ++c) lstChoices.AddItem(std::string(spreadsheet::ChoiceName(c)));
    label(lblName, "Name of the new category:", 120, 3780, 3840, 255, 5);
    txtName.move(120, 4050, 3840, 315);
    txtName.setTabIndex(6);
    txtName.setText(baseName(path));
    forms::declareButton(cmdOK, "OK", 4800, 4050, 1080, 345, 7, [this] { cmdOK_Click(); });
    forms::declareButton(cmdCancel, "Cancel", 6000, 4050, 1080, 345, 8, [this] { cmdCancel_Click(); });
    cmdOK.Default = true;
    cmdCancel.Cancel = true;
    // What a screen reader says for each list and box, and the label beside it.
    lstColumns.setAccessibleName("Columns of the file");
    lstColumns.setLabelledBy(&lblColumns);
    lstChoices.setAccessibleName("Goes to");
    lstChoices.setLabelledBy(&lblChoice);
    txtName.setAccessibleName("Name of the new category");
    txtName.setLabelledBy(&lblName);
    lstColumns.Click = [this] { lstColumns_Click(); };
    lstChoices.Click = [this] { lstChoices_Click(); };
    listColumns();
    lstColumns.setSelected(0);
    form.announce();
}

frmImport::~frmImport() { form.retire(); }

// "Colour (red) → Description, with its heading": the heading, the first
// item's cell as an example, and where the column goes.
void frmImport::listColumns() {
    listing_ = true;
    const int selected = lstColumns.ListIndex();
    lstColumns.Clear();
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        std::string entry = labels_[i];
        if (sheet_.rows.size() > 1) {
            std::string example = forms::utf8::blankControls(sheet_.cell(sheet_.rows[1], i));
            if (forms::utf8::length(example) > 24) example = forms::utf8::mid(example, 0, 23) + "…";
            if (!example.empty()) entry += " (" + example + ")";
        }
        lstColumns.AddItem(entry + " → " + std::string(spreadsheet::ChoiceName(choices[i])));
    }
    if (selected >= 0) lstColumns.setSelected(selected);
    listing_ = false;
}

void frmImport::lstColumns_Click() {
    const int i = lstColumns.ListIndex();
    if (i < 0 || listing_) return;
    listing_ = true;
    lstChoices.setSelected(choices[static_cast<std::size_t>(i)]);
    listing_ = false;
}

void frmImport::lstChoices_Click() {
    const int i = lstColumns.ListIndex(), choice = lstChoices.ListIndex();
    if (listing_ || i < 0 || choice < 0) return;
    choices[static_cast<std::size_t>(i)] = choice;
    listColumns();
}

frmImport::Outcome frmImport::Sort() const {
    Outcome out;
    const std::size_t headings = labels_.size();
    long fullFrom = 0, fullTo = 0;
    std::size_t full = 0;
    for (std::size_t r = 1; r < sheet_.rows.size(); ++r) {
        const Sheet::Row& row = sheet_.rows[r];
        if (const std::size_t width = sheet_.width(row); width > headings) {
            ++out.rowsNotIn;
            out.notIn.push_back("Line " + std::to_string(row.line) + ": it has " + std::to_string(width) +
                                " cells, and the heading line has " + std::to_string(headings) + ".");
        } else if (out.rows.size() == static_cast<std::size_t>(kRoom)) {
            if (!full++) fullFrom = row.line;
            fullTo = row.line;
        } else {
            out.rows.push_back(&row);
        }
    }
    out.rowsNotIn += full;
    if (full)
        out.notIn.push_back("Lines " + std::to_string(fullFrom) + " to " + std::to_string(fullTo) + " (" +
                            plural(full, " row", " rows") + "): a category holds at most " + std::to_string(kRoom) +
                            " items.");
    if (sheet_.unclosedLine) {
        ++out.rowsNotIn;
        out.notIn.push_back("Line " + std::to_string(sheet_.unclosedLine) +
                            ": a cell opens with a double quote that is never closed, so this line and the rest of "
                            "the file could not be read.");
    }
    return out;
}

// Makes the category by the road Add Category takes (same name rules, same
// messages), fills its grid, stores it and tells what came in. A refused name
// leaves the preview open with what the user typed.
void frmImport::cmdOK_Click() {
    const std::string name = txtName.Text();
    if (name.empty()) {
        main.Message("Please type a name for the new category.");
        txtName.TrySetFocus();
        return;
    }
    if (!main.AddCategoryNamed(name)) {
        if (form.Visible()) txtName.TrySetFocus();
        return;
    }
    const Outcome outcome = Sort();
    forms::Grid& g = main.FG1;
    g.setRows(1 + static_cast<int>(outcome.rows.size()));
    std::array<std::string, 7> joined;
    for (int r = 1; r < g.Rows(); ++r) {
        const auto cells =
            spreadsheet::ItemCells(sheet_, *outcome.rows[static_cast<std::size_t>(r - 1)], choices, labels_, joined);
        for (int c = 0; c < 7; ++c) g.setTextMatrix(r, c, cells[static_cast<std::size_t>(c)]);
    }
    main.SaveCategoryFile();
    const bool stored = !main.SaveFailed;
    // Opened as a click opens it: shown, with its totals; a grid that did not
    // reach the disk is kept and the user told.
    main.lstCategory_Click();
    std::string text =
        stored ? plural(outcome.rows.size(), " item", " items") + " came in" +
                     " as the category \"" + name + "\"."
               : "The category \"" + name + "\" was made, but its items could not be stored.";
    if (!outcome.notIn.empty()) {
        text += "\n\n" + plural(outcome.rowsNotIn, " row", " rows") + " of the file could not come in:";
        for (std::size_t i = 0; i < std::min(kNamedRows, outcome.notIn.size()); ++i) text += "\n" + outcome.notIn[i];
        if (outcome.notIn.size() > kNamedRows)
            text += "\nand " + std::to_string(outcome.notIn.size() - kNamedRows) + " more.";
    }
    main.UnloadImport();
    main.Message(text);
}

void frmImport::cmdCancel_Click() { main.UnloadImport(); }

} // namespace qm
