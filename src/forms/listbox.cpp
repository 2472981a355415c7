#include "forms/listbox.h"

#include <algorithm>

#include "forms/failure.h"
#include "forms/form.h"
#include "forms/runtime.h"

namespace forms {

namespace {

// Decodes one code point at i (a broken byte stands for itself) and moves i on.
char32_t next(const std::string& s, std::size_t& i) {
    unsigned char b = static_cast<unsigned char>(s[i]);
    int n = b < 0x80 ? 0 : (b >> 5) == 0x6 ? 1 : (b >> 4) == 0xE ? 2 : (b >> 3) == 0x1E ? 3 : -1;
    if (n <= 0 || i + n >= s.size()) { ++i; return b; }
    char32_t c = b & (0x3F >> n);
    for (int k = 1; k <= n; ++k) {
        unsigned char t = static_cast<unsigned char>(s[i + k]);
        if ((t & 0xC0) != 0x80) { ++i; return b; }
        c = (c << 6) | (t & 0x3F);
    }
    i += n + 1;
    return c;
}

// Simple case folding for the scripts a list of names is likely to hold;
// Latin letters with marks sort with their base letter.
char32_t foldCase(char32_t c);

char32_t fold(char32_t c) {
    c = foldCase(c);
    if (c == 0xDF) return 's';
    if (c >= 0xE0 && c <= 0xFF) {
        static const char kBase[] = "aaaaaaaceeeeiiiidnooooo\xF7ouuuuy\xFEy";
        char b = kBase[c - 0xE0];
        return b == '\xF7' || b == '\xFE' ? c : static_cast<char32_t>(b);
    }
    return c;
}

char32_t foldCase(char32_t c) {
    if (c >= 'A' && c <= 'Z') return c + 32;
    if (c < 0x80) return c;
    if ((c >= 0xC0 && c <= 0xDE && c != 0xD7)) return c + 32;
    if (c >= 0x100 && c <= 0x17F && c != 0x130 && c != 0x131 && c != 0x138 && c != 0x149 && c != 0x17F) {
        bool oddPairs = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
        if (oddPairs) return (c % 2 == 1) ? c + 1 : c;
        return (c % 2 == 0) ? c + 1 : c;
    }
    if (c >= 0x391 && c <= 0x3AB && c != 0x3A2) return c + 32;
    if (c >= 0x410 && c <= 0x42F) return c + 32;
    if (c >= 0x400 && c <= 0x40F) return c + 80;
    return c;
}

} // namespace

ListBox::ListBox(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::ListBox) {}

bool ListBox::sortsBefore(const std::string& a, const std::string& b) {
    std::size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        char32_t x = fold(next(a, i)), y = fold(next(b, j));
        if (x != y) return x < y;
    }
    if (i < a.size() || j < b.size()) return j < b.size(); // the shorter sorts first
    return a < b;
}

const std::string& ListBox::List(int i) const {
    if (i < 0 || i >= ListCount()) throw Failure("invalid list index");
    return items_[static_cast<std::size_t>(i)];
}

void ListBox::AddItem(const std::string& text) {
    if (ListCount() >= kMaxEntries) throw Failure("out of memory: list is full");
    auto at = items_.end();
    if (Sorted) at = std::upper_bound(items_.begin(), items_.end(), text, sortsBefore);
    int pos = static_cast<int>(at - items_.begin());
    checked_.insert(checked_.begin() + pos, true);
    items_.insert(at, text);
    if (index_ >= pos) ++index_;
    notify(Prop::Items);
}

void ListBox::RemoveItem(int index) {
    if (index < 0 || index >= ListCount()) throw Failure("invalid list index");
    items_.erase(items_.begin() + index);
    checked_.erase(checked_.begin() + index);
    if (index_ == index) index_ = -1;
    else if (index_ > index) --index_;
    notify(Prop::Items);
}

void ListBox::Clear() {
    items_.clear();
    checked_.clear();
    index_ = -1;
    notify(Prop::Items);
}

bool ListBox::Checked(int i) const {
    List(i);
    return checked_[static_cast<std::size_t>(i)];
}

void ListBox::setChecked(int i, bool on) {
    List(i);
    if (checked_[static_cast<std::size_t>(i)] == on) return;
    checked_[static_cast<std::size_t>(i)] = on;
    notify(Prop::Items);
}

void ListBox::setSelected(int i) {
    if (i < 0 || i >= ListCount()) throw Failure("invalid list index");
    if (i == index_) return;
    index_ = i;
    notify(Prop::Selection);
    runtime().raise(Click);
}

int ListBox::nextStartingWith(char32_t letter, int after) const {
    const int n = ListCount();
    for (int k = 1; k <= n; ++k) {
        const int j = (std::max(after, -1) + k) % n;
        const std::string& s = items_[static_cast<std::size_t>(j)];
        std::size_t at = 0;
        if (!s.empty() && foldCase(next(s, at)) == foldCase(letter)) return j;
    }
    return after;
}

std::string ListBox::Text() const { return index_ < 0 ? std::string() : items_[static_cast<std::size_t>(index_)]; }

void ListBox::setText(const std::string& text) {
    // The first entry with exactly this text, as a search from the top finds it.
    for (int i = 0; i < ListCount(); ++i)
        if (items_[static_cast<std::size_t>(i)] == text) { setSelected(i); return; }
}

} // namespace forms
