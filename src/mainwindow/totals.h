#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "forms/grid.h"
#include "forms/revision_store.h"
#include "forms/ports.h"

namespace qm {

// A cell's text read as a number the forgiving way: blanks, tabs and line feeds
// taken out, then sign, digits with one period, an exponent (E or D); reading
// stops at the first character that can't go on; &H and &O read hexadecimal
// and octal whole numbers. No number at the start reads as 0. Fails only for a
// number too large for a 64-bit float.
double NumberFromCell(std::string_view text);

// An amount brought to the currency's decimals as its decimal text reads:
// the double at 15 significant digits, then halves away from zero, so 1.005
// gives 1.01 though the double is a little less than 1.005. Fails for a number
// beyond a 64-bit float.
forms::MoneyUnits RoundToCurrency(double x, int decimals);

// The amount in the regional currency format; fails for a number beyond a 64-bit float.
std::string MoneyText(const forms::CurrencyPort& currency, double x);
// Any text MoneyText gives, and plain numbers such as "0".
double MoneyValue(const forms::CurrencyPort& currency, const std::string& text);

// A money column's total as the window's box shows it, worked the plain way:
// "0", then the running total through its currency text at every row. For the
// totals of rows that are not in the grid (UpdateTotals gives the same for the
// open category, faster). Fails at the row where UpdateTotals stops.
std::string MoneyColumnTotal(const forms::CurrencyPort& currency, int rows, const std::function<std::string_view(int row)>& cell);

// The numbers of the two money columns, kept beside the grid so that adding up
// the totals parses only the cells that changed since the last time.
class TotalsCache : public forms::GridListener {
public:
    static constexpr int kCostCol = 1;
    static constexpr int kValueCol = 2;

    explicit TotalsCache(forms::Grid& grid);
    ~TotalsCache() override;
    TotalsCache(const TotalsCache&) = delete;
    TotalsCache& operator=(const TotalsCache&) = delete;

    // The state of one money cell: its number, and, when that number is a
    // whole count of the currency's smallest units (as amounts nearly always
    // are), that count, so the totals can add it exactly as whole numbers.
    enum State : std::uint8_t { Stale, Number, TooLarge };
    struct Entry {
        double value = 0;
        double units = 0;
        State state = Stale;
        bool whole = false;
    };

    // The entries count whole units of 1 / scale from now on.
    void useScale(double scale) {
        if (scale != scale_) rescale(scale);
    }
    // The cell's entry, NumberFromCell of its text read when it changed.
    const Entry& entry(int row, int col) {
        Entry& e = column(col)[static_cast<std::size_t>(row)];
        if (e.state == Stale) refresh(e, row, col);
        return e;
    }

    void cellChanged(int row, int col) override;
    void rowsInserted(int first, int count) override;
    void rowsRemoved(int first, int count) override;
    void layoutChanged() override {}
    bool wantsLayout() const override { return false; }
    void gridReset() override;
    void textsSwapped(std::uint64_t out, std::uint64_t in) override;

private:
    std::vector<Entry>& column(int col) { return col == kCostCol ? cost_ : value_; }
    void refresh(Entry& e, int row, int col);
    void rescale(double scale);

    forms::Grid& grid_;
    double scale_ = 100;
    std::vector<Entry> cost_, value_;
    // The entries of texts the grid gave away, for when those texts come back
    // (as many as a few big categories hold).
    struct Kept {
        double scale;
        std::vector<Entry> cost, value;
    };
    forms::RevisionStore<Kept> kept_{16u << 20};
};

} // namespace qm
