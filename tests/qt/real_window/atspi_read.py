#!/usr/bin/python3
"""Reads the running program through AT-SPI, as Orca would, and drives it with
real keys (xdotool). Started by atspi_test.sh inside its display and buses.

  atspi_read.py PID --tree     prints the main window's tree: role, name, [hidden]
  atspi_read.py PID --check    the checks; exit 1 when one fails"""
import subprocess
import sys
import time

import pyatspi
from gi.repository import GLib


# The worked example atspi_test.sh writes: two categories, the first opened.
HEADINGS = ["Item", "Original Cost", "Current Value", "Location Purchased", "Date Purchased",
            "Warranty Expiration", "Serial Number / Description"]
ITEMS = ["Jack", "Hammer", "Saw"]
OTHER_FIRST_ITEM = "Kettle"
TOTALS = ["Total cost of items in category", "Total value of items in category"]


def role(acc):
    return acc.getRoleName()


def showing(acc):
    return acc.getState().contains(pyatspi.STATE_SHOWING)


def children(acc):
    return [acc.getChildAtIndex(i) for i in range(acc.childCount)]


def walk(acc):
    yield acc
    if role(acc) == "table":
        return  # its cells are read through the table
    for c in children(acc):
        yield from walk(c)


def main_window(pid):
    desktop = pyatspi.Registry.getDesktop(0)
    for _ in range(60):
        for app in children(desktop):
            if app is not None and app.get_process_id() == pid:
                for w in children(app):
                    if w.name == "Quillmere" and showing(w):
                        return w
        time.sleep(0.5)
    raise SystemExit("FAIL: the program's main window is not on the AT-SPI bus")


def print_tree(acc, depth=0, out=sys.stdout):
    hidden = "" if showing(acc) else " [hidden]"
    out.write(f"{'  ' * depth}{role(acc)} \"{acc.name}\"{hidden}\n")
    kids = children(acc)
    if role(acc) == "table":
        t = acc.queryTable()
        out.write(f"{'  ' * (depth + 1)}({t.nRows} rows x {t.nColumns} columns; "
                  f"headings and the first row below)\n")
        kids = kids[: 2 * t.nColumns]
    for c in kids:
        print_tree(c, depth + 1, out)


# ---- input and events ----------------------------------------------------------

events = []
focus = {"now": None}  # where the focus went last, as the events told it


def on_event(e):
    src = e.source
    try:
        events.append((e.type, src.name if src else "", role(src) if src else ""))
    except GLib.GError:  # an object already gone (a closed window's)
        return
    if src is not None and (e.type.startswith("focus") or
                            (e.type.startswith("object:state-changed:focused") and e.detail1 == 1)):
        focus["now"] = src


def pump(seconds=0.6):
    end = time.time() + seconds
    ctx = GLib.MainContext.default()
    while time.time() < end:
        while ctx.pending():
            ctx.iteration(False)
        time.sleep(0.02)


def key(name):
    subprocess.run(["xdotool", "key", "--clearmodifiers", name], check=True)
    pump()


def claiming_focus(win):
    """Every object whose state says it has the focus (a table's cells included)."""
    found = []
    for acc in walk(win):
        if role(acc) == "table":
            found += [c for c in children(acc) if c.getState().contains(pyatspi.STATE_FOCUSED)]
        if acc.getState().contains(pyatspi.STATE_FOCUSED):
            found.append(acc)
    return found


def focused():
    return focus["now"]


# ---- the checks ----------------------------------------------------------------

failures = []


def check(name, ok, what):
    if ok:
        print(f"ok    {name}: {what}")
        return
    print(f"FAIL  {name}: {what}")
    failures.append(name)


def grid_checks(win):
    tables = [a for a in walk(win) if role(a) == "table"]
    check("grid:table", len(tables) == 1, f"one table in the window ({len(tables)})")
    if not tables:
        return None
    table = tables[0]
    t = table.queryTable()
    check("grid:shape", (t.nRows, t.nColumns) == (len(ITEMS), len(HEADINGS)), f"{t.nRows} rows x {t.nColumns} columns")
    heads = [t.getColumnDescription(c) for c in range(t.nColumns)]
    check("grid:headings", heads == HEADINGS, f"column descriptions {heads}")
    header_cells = [t.getColumnHeader(c) for c in range(t.nColumns)]
    check("grid:header-cells", [h.name if h else None for h in header_cells] == HEADINGS and
          all(role(h) == "table column header" for h in header_cells if h),
          f"column header cells {[(role(h), h.name) if h else None for h in header_cells]}")
    names = [t.getAccessibleAt(r, 0).name for r in range(t.nRows)]
    check("grid:cells", names == ITEMS, f"the item column reads {names}")
    jack = t.getAccessibleAt(0, 0)
    ext = jack.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    x, y = ext.x + ext.width // 2, ext.y + ext.height // 2
    hit = win
    while True:  # as a reader does: down from the window to the deepest object at the point
        below = hit.queryComponent().getAccessibleAtPoint(x, y, pyatspi.DESKTOP_COORDS)
        if below is None or below == hit:
            break
        hit = below
    check("grid:hit-test", hit is not None and hit.name == "Jack" and role(hit) == "table cell",
          f"the point ({x},{y}) of the Jack cell finds {role(hit)} \"{hit.name}\"")
    index = jack.getIndexInParent()
    pos = (t.getRowAtIndex(index), t.getColumnAtIndex(index))
    check("grid:cell-position", pos == (0, 0) and t.getIndexAt(0, 0) == index, f"Jack at {pos}, child {index}")
    return table


def editor_checks(win):
    claims = claiming_focus(win)
    texts = [a for a in claims if role(a) == "text"]
    ed = focus["now"] = texts[0] if texts else None
    check("editor:focused", ed is not None, f"the focus is on the editor (claimed by {[(role(a), a.name) for a in claims]})")
    check("focus:single", len(claims) == 1, f"one object claims the focus ({len(claims)})")
    if ed is None:
        return None
    check("editor:named", ed.name == f"{ITEMS[-1]}, {HEADINGS[-1]}", f"the opened editor is \"{ed.name}\"")
    # From the last cell: Up, Up, Right (wraps to the next row), Up.
    for k, want in [("Up", f"{ITEMS[-2]}, {HEADINGS[-1]}"), ("Up", f"{ITEMS[0]}, {HEADINGS[-1]}"),
                    ("Right", f"{ITEMS[1]}, {HEADINGS[1]}"), ("Up", f"{ITEMS[0]}, {HEADINGS[1]}")]:
        del events[:]
        key(k)
        now = focused()
        check("editor:moves", now is not None and now.name == want, f"after {k} the focus is \"{now.name if now else None}\"")
        told = {(t, n) for t, n, r in events if r == "text"}
        check("editor:told", ("object:property-change:accessible-name", want) in told and
              any(t.startswith("focus") or t.startswith("object:state-changed:focused") for t, n in told if n == want),
              f"after {k}, a name change and a focus event for \"{want}\"")
    return ed


def typing_checks(table):
    # The editor stands on Jack's cost: what is typed is what the cell reads,
    # and a reader holding the cell hears of the change.
    cost = table.queryTable().getAccessibleAt(0, 1)
    before = cost.name
    del events[:]
    key("5")
    pump()
    check("typing:cell", cost.name == before + "5", f"the cell reads \"{cost.name}\" after typing 5 into \"{before}\"")
    check("typing:told", ("object:property-change:accessible-name", before + "5", "table cell") in events,
          "a name change for the cell")
    key("BackSpace")


def totals_checks(win):
    texts = [a.name for a in walk(win) if role(a) == "text"]
    for want in TOTALS:
        check("totals:named", any(n.startswith(want) for n in texts), f"a text box named \"{want}\" among {texts}")


def tab_round_checks(win):
    start = focused()
    seen = []
    for _ in range(20):
        key("Tab")
        f = focused()
        seen.append((role(f), f.name) if f else (None, None))
        if f is not None and f.name == start.name and role(f) == "text":
            break
    print("      Tab round: " + " | ".join(f"{r} \"{n}\"" for r, n in seen))
    check("tab:back", seen and seen[-1] == (role(start), start.name), "Tab from the editor comes round to it")
    check("tab:named", all(n for r, n in seen), "every stop of the round has a name")
    buttons = [n for r, n in seen if r == "push button"]
    check("tab:buttons", len(buttons) == 10, f"the ten buttons in the round ({len(buttons)})")
    check("list-tab:in-round", any(r == "list" for r, n in seen), "the category list is in the round")


def list_down_checks(win, table):
    for _ in range(20):
        f = focused()
        if f is not None and role(f) in ("list", "list item"):
            break
        key("Tab")
    f = focused()
    check("list-down:focus", f is not None and role(f) in ("list", "list item"), "Tab reaches the category list")
    if f is None or role(f) not in ("list", "list item"):
        return
    key("Down")
    pump(1.5)
    first = table.queryTable().getAccessibleAt(0, 0) if table.queryTable().nRows else None
    check("list-down:switch", first is not None and first.name == OTHER_FIRST_ITEM,
          f"Down in the list opens the next category (first item \"{first.name if first else None}\")")


def app_window(pid, name):
    for app in children(pyatspi.Registry.getDesktop(0)):
        if app is not None and app.get_process_id() == pid:
            for w in children(app):
                if w is not None and w.name == name and showing(w):
                    return w
    return None


def find_checks(pid):
    # Ctrl+F: a dialog whose box, named by its label, has the focus; what is
    # typed lists the cell found in a named list; Esc closes it.
    key("ctrl+f")
    pump(1.0)
    dlg = app_window(pid, "Find")
    check("find:dialog", dlg is not None and role(dlg) == "dialog", f"Ctrl+F shows a dialog \"Find\" ({role(dlg) if dlg else None})")
    if dlg is None:
        return
    f = focused()
    check("find:box", f is not None and (role(f), f.name) == ("text", "Find what"), f"the focus is on {(role(f), f.name) if f else None}")
    for ch in "jack":
        key(ch)
    pump(1.0)
    results = [a for a in walk(dlg) if role(a) == "list" and a.name == "Results"]
    found = [c.name for c in children(results[0])] if results else []
    check("find:results", any("[Jack]" in n for n in found), f"the list \"Results\" reads {found}")
    key("Escape")
    pump(1.0)
    check("find:closed", app_window(pid, "Find") is None, "Esc closes the Find window")


def main():
    pid, what = int(sys.argv[1]), sys.argv[2]
    win = main_window(pid)
    if what == "--tree":
        print_tree(win)
        return 0
    pyatspi.Registry.registerEventListener(on_event, "object:property-change:accessible-name", "focus:",
                                           "object:state-changed:focused")
    pump()
    table = grid_checks(win)
    editor_checks(win)
    if table is not None:
        typing_checks(table)
    totals_checks(win)
    tab_round_checks(win)
    if table is not None:
        list_down_checks(win, table)
    find_checks(pid)
    if failures:
        print(f"FAIL: {len(failures)} check(s): {', '.join(failures)}")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
