#pragma once
#include <string>

namespace forms {

class Button;
class CheckBox;
class Control;
class Form;
class Grid;
class ListBox;
class MenuItem;
class Runtime;
class TextBox;

// The user's input as the runtime takes it from a desktop face. Each call is
// one piece of input: it runs as an outermost event, so the focus events it
// causes come after it. A face calls these and nothing else for user input.
namespace input {

// A click on a button: the button takes the focus, then its Click runs.
void click(Runtime& rt, Button& b);
// A tick or untick of a check box: it takes the focus, then its Value changes (which runs Click).
void toggle(Runtime& rt, CheckBox& box);
// A menu entry or its shortcut.
void menu(Runtime& rt, MenuItem& item);
// The focus moved by the mouse or by a key to this control (nothing if it can't take it).
void focus(Runtime& rt, Control& c);
// Tab or Shift+Tab: the next control in tab order that can take the focus now.
void tab(Runtime& rt, Form& form, bool backwards);
// A click on a list entry: the list gains the focus first, as its own piece of
// input, then the entry is selected.
// The entry is the one at index when the user pointed at it, whatever the
// focus gain does to the list.
void selectEntry(Runtime& rt, ListBox& list, int index);
// A double-click on a list entry: selectEntry, then DblClick as its own piece of input.
void doubleClickEntry(Runtime& rt, ListBox& list, int index);
// Space on, or a click in the tick box of, an entry of a list with check boxes.
void toggleEntry(Runtime& rt, ListBox& list, int index);
// A key while the list holds the focus: Up, Down, Home, End, PageUp and
// PageDown (by page entries), or a character (the next entry that starts with
// it), each selecting its entry as a click on it does, which runs the switch.
void listKey(Runtime& rt, ListBox& list, int keyCode, char32_t ch, int page);
// Enter or Esc that no control takes itself: the window's Default or Cancel
// button is pressed; Esc in a dialog without one closes it as its title bar
// would. False if the key does nothing.
bool cancelOrDefault(Runtime& rt, Form& form, bool enter);
// One key in a text box: KeyDown, then KeyPress if the key makes a character
// (ch != 0), then the box's own edit, which runs Change. A box that can't hold
// the focus (hidden, disabled) takes no keys.
void key(Runtime& rt, TextBox& box, int keyCode, int shift, char32_t ch);
// Text typed without a key of its own (input method, dead keys): one KeyPress
// and own edit per character.
void text(Runtime& rt, TextBox& box, const std::u32string& chars);
// A paste into a text box: the box's own edit, then Change.
void paste(Runtime& rt, TextBox& box, const std::string& utf8);
// A click in a text box: it takes the focus and the caret goes where the click put it.
void clickText(Runtime& rt, TextBox& box, int caret);
// A key going down while the grid holds the focus: KeyDown runs, as a piece of
// input of its own. Returns false if it gave the focus to another control: the
// key then belongs to that control, and gridKey doesn't follow.
bool gridKeyDown(Runtime& rt, Grid& grid, int keyCode, int shift);
// A key while the grid holds the focus: arrow keys move the current cell as the
// grid's own keys do; a character runs KeyPress.
void gridKey(Runtime& rt, Grid& grid, int keyCode, char32_t ch);
// A click on a cell: the grid takes the focus, the cell becomes current, then Click runs.
void clickCell(Runtime& rt, Grid& grid, int row, int col);
// The close button of a window's title bar.
void closeWindow(Runtime& rt, Form& form);
// The scroll bars of a grid.
void scrollGrid(Runtime& rt, Grid& grid, int topRow, int leftCol);

} // namespace input
} // namespace forms
