#pragma once
#include <optional>
#include <string>
#include <vector>

#include "find/find_index.h"
#include "forms/controls.h"
#include "forms/form.h"
#include "forms/listbox.h"

namespace qm {

class frmMain;

// Find: every keystroke in the text box lists the cells of every category
// that hold the text, letter case and accents aside; and the items whose
// warranty ends within some days, has ended, or any, by the date typed in
// their Warranty Expiration cell. Enter or a double-click on an entry opens
// its category as a click on the list does and puts the cell editor on its
// cell. The window stays open beside the main window.
class frmFind {
public:
    explicit frmFind(frmMain& main);
    ~frmFind();

    frmMain& main;
    forms::Form form;
    forms::Label lblFind;
    forms::TextBox txtFind;
    forms::ListBox lstResults;
    forms::Label lblCount;
    forms::Label lblWarranty;
    forms::ListBox lstWarrantyChoice;
    forms::Label lblDays;
    forms::TextBox txtDays;
    forms::ListBox lstWarranty;
    forms::Button cmdGo;
    forms::Button cmdClose;

    // The entries of lstWarrantyChoice, in this order.
    enum class WarrantyChoice { EndsWithin, Ended, Any };
    static constexpr int kShownResults = 500;
    static constexpr std::size_t kShownWarranties = 1000; // in each section

    // A cell an entry of a list leads to, with its item's name and its text
    // as listed; a heading line leads nowhere.
    struct Target {
        std::string category;
        int row = 0, col = 0;
        std::string item, text;
    };
    const std::vector<std::optional<Target>>& resultTargets() const { return resultTargets_; }
    const std::vector<std::optional<Target>>& warrantyTargets() const { return warrantyTargets_; }

    void txtFind_Change();
    void ShowWarranty();
    // Goes to the entry chosen in the list last used (the first one if none is chosen).
    void cmdGo_Click();
    void GoTo(const forms::ListBox& list);
    void cmdClose_Click();

private:
    void declareLayout();
    // Whether the cell still stands where the entry says, as listed.
    bool StillThere(const Target& t);

    FindIndex index_;
    std::vector<std::optional<Target>> resultTargets_, warrantyTargets_;
    const forms::ListBox* lastList_ = &lstResults;
};

} // namespace qm
