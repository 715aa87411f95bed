"""What a screen reader hears of a program, and the keys that a user presses: AT-SPI and xdotool."""

import os
import subprocess
import time

import pyatspi
from gi.repository import Atspi, GLib

PATIENCE = 10  # seconds for the program to do what it was told; the machine may be busy
NO_ANSWER = 1.5  # seconds after which a key did not move the focus


class Stuck(Exception):
    """The program did not come to where the walk wanted it."""


class Desk:
    """The program's windows, its focus and a keyboard."""

    def __init__(self, name):
        self._name = name
        self._app = None
        self._focused = None

    def listen(self):
        """Once the program is there: what is asked for while it starts, it does not hear."""
        pyatspi.Registry.registerEventListener(self._heard, "object:state-changed:focused")
        self.pump(0.3)

    def _heard(self, event):
        if event.detail1:
            self._focused = event.source

    @staticmethod
    def pump(seconds=0.0):
        end = time.monotonic() + seconds
        while True:
            while GLib.MainContext.default().iteration(False):
                pass
            if time.monotonic() >= end:
                return
            time.sleep(0.004)

    def wait(self, what, wanted, patience=PATIENCE):
        end = time.monotonic() + patience
        while time.monotonic() < end:
            found = wanted()
            if found:
                return found
            self.pump(0.01)
        raise Stuck(f"{what}; {[w.name for w in self.windows()]} are there, and the keyboard is in "
                    f"\"{self._typed_into().strip()}\"")

    @staticmethod
    def keys(*names):
        # With xdotool's own pause: Alt that is let go at once opens no menu.
        subprocess.run(["xdotool", "key", *names], check=True)

    @staticmethod
    def type(text):
        subprocess.run(["xdotool", "type", "--delay", "1", text], check=True)

    # ---- windows

    def windows(self):
        if self._app is None:
            found = [a for a in pyatspi.Registry.getDesktop(0) if a is not None and a.name == self._name]
            if not found:
                return []
            self._app = found[0]
            self._app.set_cache_mask(Atspi.Cache.NONE)  # what is asked is asked of the program each time
        return [w for w in children(self._app) if has(w, pyatspi.STATE_SHOWING)]

    def active(self, title):
        """The window in front, when its title begins so."""
        for window in self.windows():
            if window.name.startswith(title) and self._typed_into().startswith(title):
                return window
        return None

    def window(self, title):
        found = self.wait(f"no window \"{title}\" came up", lambda: self.active(title))
        self.pump(0.05)
        return found

    def bring(self, title):
        """A window that stands behind another one, as a click on it does: where the splash goes, some desktops leave the
        keyboard nowhere."""
        self.wait(f"no window \"{title}\" came up", lambda: any(w.name.startswith(title) for w in self.windows()))
        self.pump(1)
        if not self.active(title):
            subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}", "windowactivate"], check=False)
        self.window(title)

    def enter_again(self, title):
        """Away to the program's other windows and back, as with clicks."""
        for name in [w.name for w in self.windows() if not w.name.startswith(title)] + [title]:
            subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{name}", "windowactivate"], check=False)
            self.pump(0.3)
        self.window(title)

    @staticmethod
    def _typed_into():
        return subprocess.run(["xdotool", "getwindowfocus", "getwindowname"], capture_output=True, text=True).stdout

    def gone(self, title):
        self.wait(f"\"{title}\" stayed", lambda: not self.active(title))

    # ---- focus

    def tab(self, key="Tab"):
        """What has the focus after a key; None when it did not move. Qt asks the registry about every key, and loses
        one whose answer is late, so a key that moved nothing is pressed once more."""
        self.pump()
        for _ in range(2):
            self._focused = None
            self.keys(key)
            end = time.monotonic() + NO_ANSWER
            while self._focused is None and time.monotonic() < end:
                self.pump(0.004)
            if self._focused is not None:
                break
        return self._focused

    def choose(self, window, menu_key, *path):
        """An item of a window's menu, by the arrows alone: what the keyboard does not reach is not chosen."""
        bar = next(n for n in nodes(self.window(window)) if n.getRole() == pyatspi.ROLE_MENU_BAR)

        def opened():
            return any(has(popup, pyatspi.STATE_SHOWING) for menu in children(bar) for popup in children(menu))

        self.pump(0.2)  # a desktop that still gives the window its focus back shuts a menu
        self.keys(menu_key)
        try:
            self.wait(f"{menu_key} opens no menu", opened, PATIENCE / 4)
        except Stuck:
            self.keys(menu_key)
            self.wait(f"{menu_key} opens no menu", opened)
        for name in path:
            for _ in range(25):
                at = self.tab("Down")
                if at is None or at.name.startswith(name):
                    break
            if at is None or not at.name.startswith(name):
                raise Stuck(f"the arrows do not come to \"{name}\" of {menu_key}")
        self.keys("Return")

    def focus(self, node):
        node.queryComponent().grabFocus()
        self.pump(0.03)

    def press(self, window, name):
        """A button, by the space bar."""
        button = self.wait(
            f"no button \"{name}\" in \"{window.name}\"",
            lambda: next((n for n in nodes(window) if n.getRole() == pyatspi.ROLE_PUSH_BUTTON and n.name == name
                          and has(n, pyatspi.STATE_ENABLED)), None))
        self.focus(button)
        self.keys("space")


# ---- the tree

# Their children are counted in thousands, and belong to them.
CLOSED = {pyatspi.ROLE_TABLE, pyatspi.ROLE_LIST, pyatspi.ROLE_TREE, pyatspi.ROLE_MENU_BAR, pyatspi.ROLE_POPUP_MENU,
          pyatspi.ROLE_COMBO_BOX, pyatspi.ROLE_SPIN_BUTTON, pyatspi.ROLE_STATUS_BAR}


def children(node):
    for index in range(node.childCount):
        child = node.getChildAtIndex(index)
        if child is not None:
            yield child


def has(node, state):
    return node.getState().contains(state)


def nodes(window, closed=frozenset(CLOSED)):
    """What is shown of a window, in the tree's order."""
    for child in children(window):
        if not has(child, pyatspi.STATE_SHOWING):
            continue
        yield child
        if child.getRole() not in closed:
            yield from nodes(child, closed)


def place(node):
    return node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)


def bindings(node):
    try:
        actions = node.queryAction()
    except NotImplementedError:
        return []
    return [actions.getKeyBinding(i) for i in range(actions.nActions)]


def relations(node, kind):
    return [r.getTarget(i) for r in node.getRelationSet() if r.getRelationType() == kind
            for i in range(r.getNTargets())]


def say(node):
    return f"{node.getRoleName()} \"{node.name}\""
