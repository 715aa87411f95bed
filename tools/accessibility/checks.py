"""What must hold for a window: every finding is one line of text."""

import pyatspi

from desk import bindings, children, has, nodes, place, relations, say

FIELDS = {pyatspi.ROLE_TEXT, pyatspi.ROLE_PASSWORD_TEXT, pyatspi.ROLE_COMBO_BOX, pyatspi.ROLE_SPIN_BUTTON,
          pyatspi.ROLE_LIST, pyatspi.ROLE_TABLE, pyatspi.ROLE_SLIDER, pyatspi.ROLE_TREE}
CONTROLS = FIELDS | {pyatspi.ROLE_PUSH_BUTTON, pyatspi.ROLE_TOGGLE_BUTTON, pyatspi.ROLE_CHECK_BOX,
                     pyatspi.ROLE_RADIO_BUTTON, pyatspi.ROLE_PAGE_TAB, pyatspi.ROLE_PAGE_TAB_LIST,
                     pyatspi.ROLE_MENU_ITEM, pyatspi.ROLE_DIALOG, pyatspi.ROLE_FRAME}
# A click goes to them, the keyboard goes to the control around or beside them.
NO_STOPS = {pyatspi.ROLE_LABEL, pyatspi.ROLE_PAGE_TAB, pyatspi.ROLE_TABLE_CELL, pyatspi.ROLE_LIST_ITEM,
            pyatspi.ROLE_MENU_ITEM}
NEAR = 24  # pixels between a label and its field
ROUNDING = 6  # pixels by which two things of one line may differ
MOST_STOPS = 200

# Captions that are prescribed as they stand; Alt with such a letter goes from one to the other.
PRESCRIBED_CLASHES = {
    "New Scorvane File": {"L", "S"},  # Lap Reporting Method/League Type, Racing Simulation/Speed
    "Properties": {"L", "S"},
}


def names(window):
    """No control and nothing that takes the keyboard is without a name."""
    for node in [window, *nodes(window)]:
        role = node.getRole()
        if node.name.strip():
            continue
        if role in CONTROLS or (has(node, pyatspi.STATE_FOCUSABLE) and role not in NO_STOPS):
            box = place(node)
            yield f"a {node.getRoleName()} without a name at {box.x},{box.y} ({box.width}x{box.height})"


def labels(window):
    """A label that ends with a colon says what it belongs to, which is the field beside it where there is one."""
    shown = list(nodes(window))
    fields = [(n, place(n)) for n in shown if n.getRole() in FIELDS]
    for label in shown:
        if label.getRole() != pyatspi.ROLE_LABEL or not label.name.endswith(":"):
            continue
        targets = [t.path for t in relations(label, pyatspi.RELATION_LABEL_FOR)]
        if not targets:
            yield f"{say(label)} belongs to nothing"
            continue
        field = beside(place(label), fields)
        if field is not None and not any(n.path in targets for n in [field, *children(field)]):
            yield f"{say(label)} belongs to something else than the {say(field)} beside it"


def beside(label, fields):
    """The field that stands right of a label, in its line."""
    best, distance = None, NEAR
    for field, box in fields:
        in_line = box.y < label.y + label.height and label.y < box.y + box.height and box.height < 3 * label.height
        gap = box.x - (label.x + label.width)
        if in_line and -ROUNDING <= gap < distance:
            best, distance = field, gap
    return best


def tables(window):
    """What is in a table is spoken with the headings of its row and column."""
    for node in nodes(window):
        if node.getRole() != pyatspi.ROLE_TABLE:
            continue
        table = node.queryTable()
        if table.nRows == 0 or table.nColumns == 0:
            continue
        if not table.getRowHeader(0) or not table.getRowHeader(0).name.strip():
            yield f"{say(node)}: its first row has no heading"
        for column in range(min(table.nColumns, 40)):
            cell = table.getAccessibleAt(0, column)
            if cell is None or not has(cell, pyatspi.STATE_VISIBLE):
                continue
            header = table.getColumnHeader(column)
            if header is None or not header.name.strip():
                yield f"{say(node)}: column {column + 1} has no heading"


def letters(window):
    """A letter with Alt has one owner, unless the captions are prescribed."""
    allowed = next((s for title, s in PRESCRIBED_CLASHES.items() if window.name.startswith(title)), set())
    owners = {}
    shown = list(nodes(window))
    for bar in [n for n in shown if n.getRole() == pyatspi.ROLE_MENU_BAR]:
        shown += children(bar)
        for menu in children(bar):
            yield from letters_of([i for popup in children(menu) for i in children(popup)], {}, set())
    yield from letters_of(shown, owners, allowed)


def letters_of(owned, owners, allowed):
    for node in owned:
        if node.getRole() == pyatspi.ROLE_PAGE_TAB_LIST:
            continue  # says what its tab in front says
        for binding in bindings(node):
            letter = binding.upper().removeprefix("ALT+")
            if not binding.upper().startswith("ALT+") or len(letter) != 1:
                continue
            first = owners.setdefault(letter, node)
            if first.path != node.path and letter not in allowed:
                yield f"Alt+{letter} belongs to {say(first)} and to {say(node)}"


def stops(window):
    """What Tab must come to, by path."""
    found = {}
    radios = {}
    for node in nodes(window):
        if (not has(node, pyatspi.STATE_FOCUSABLE) or not has(node, pyatspi.STATE_ENABLED)
                or node.getRole() in NO_STOPS or holds_tabs(node)):
            continue
        if node.getRole() == pyatspi.ROLE_RADIO_BUTTON and not has(node, pyatspi.STATE_CHECKED):
            radios.setdefault(node.parent.path, node)  # the arrows go to it from the chosen one
            continue
        found[node.path] = node
    return found


def holds_tabs(node):
    """Whether it takes the keyboard only to hand it to its tabs."""
    return any(c.getRole() == pyatspi.ROLE_PAGE_TAB_LIST for c in children(node))


def walk(desk, window):
    """Tab goes through everything once, in reading order, and Shift+Tab the same way back."""
    wanted = stops(window)
    if len(wanted) < 2:
        return
    if desk.tab() is None:
        # Behind the system's file dialog a desktop may have given a window the keyboard before Qt let it have it.
        print(f"{window.name}: took no key until it was entered again")
        desk.enter_again(window.name)
    boxes = {path: place(node) for path, node in wanted.items()}
    there = yield from round_trip(desk, wanted, boxes, "Tab")
    for path, node in wanted.items():
        if path not in there:
            yield f"Tab does not come to {say(node)}"
    for one, two in steps_back(there, boxes):
        yield f"Tab goes back from {say(wanted[one])} to {say(wanted[two])}"
    back = yield from round_trip(desk, wanted, boxes, "shift+Tab")
    if sorted(back) != sorted(there):
        yield "Shift+Tab does not come to what Tab comes to"


def round_trip(desk, wanted, boxes, key):
    """The paths of the stops in their order; findings on the way."""
    visited = []
    for _ in range(MOST_STOPS):
        at = stop_of(desk.tab(key), wanted)
        if at is None:  # an event that did not come: what the window itself says
            at = next((path for path, node in wanted.items()
                       if has(node, pyatspi.STATE_FOCUSED) and (not visited or path != visited[-1])), None)
        if at is None:
            yield f"{key} goes where there is nothing to do, behind {say(wanted[visited[-1]]) if visited else 'the start'}"
            return visited
        if at in visited:
            break
        visited.append(at)
    if at != visited[0]:
        yield f"{key} comes to {say(wanted[at])} twice before it is round"
    # From where one reads on the longest: the walk began wherever the keyboard was.
    turns = [visited[i:] + visited[:i] for i in range(len(visited))]
    return min(turns, key=lambda turn: len(list(steps_back(turn, boxes))))


def steps_back(turn, boxes):
    return ((a, b) for a, b in zip(turn, turn[1:]) if not reads_on(boxes[a], boxes[b]))


def stop_of(node, wanted):
    """The stop that a focused part, such as a cell or the line of a box, belongs to."""
    while node is not None:
        if node.path in wanted:
            return node.path
        node = node.parent
    return None


def reads_on(a, b):
    """Whether one reads from a to b: to the right in a line, else down, or up into a column further right."""
    if b.y < a.y + a.height - ROUNDING and a.y < b.y + b.height - ROUNDING:
        return b.x >= a.x or b.y > a.y + ROUNDING
    return b.y > a.y or b.x >= a.x + a.width - ROUNDING


ALL = (names, labels, tables, letters)


def look(desk, window):
    for check in ALL:
        yield from check(window)
    yield from walk(desk, window)
