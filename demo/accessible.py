#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What assistive technology sees of the program. `Accessibility` is for tests; run as a program, this file
is its other half, which lives on the virtual desktop's own bus."""

import json
import os
import subprocess
import sys

from desktop import Failure, wait_until


class Accessibility:
    """Finds the program's widgets by name and role, and acts on them as a user does."""

    def __init__(self, desktop):
        self.desktop = desktop
        self.process = subprocess.Popen(["/usr/bin/python3", __file__], env=desktop.environment,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        desktop.processes.append(self.process)

    def _ask(self, **question):
        self.process.stdin.write(json.dumps(question) + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def all(self, name, role=None):
        """The showing widgets of that name: role, text, states and the place on the screen."""
        return [node for node in self._ask(name=name) if role in (None, node["role"])]

    def find(self, name, role=None, seconds=20):
        return wait_until(lambda: self.all(name, role), f"{role or 'widget'} '{name}'", seconds)[0]

    def gone(self, name, role=None):
        wait_until(lambda: not self.all(name, role), f"no {role or 'widget'} '{name}'")

    def click(self, name, role=None):
        x, y, width, height = self.find(name, role)["place"]
        self.desktop.click(x + width // 2, y + height // 2)

    def toggle(self, name):
        """Clicks on the box, which is where a check box begins."""
        x, y, _, height = self.find(name, "check box")["place"]
        self.desktop.click(x + 8, y + height // 2)

    def type(self, name, text):
        """Replaces what is in a field."""
        def field():
            return next((node for node in self.all(name) if node["role"].endswith("text")), None)

        x, y, width, height = wait_until(field, f"field '{name}'")["place"]
        self.desktop.click(x + width // 2, y + height // 2)
        self.desktop.run("xdotool", "key", "--clearmodifiers", "ctrl+a")
        self.desktop.run("xdotool", "type", "--delay", "8", text)
        wait_until(lambda: field()["role"] == "password text" or field()["text"] == text,
                   f"'{text}' in '{name}'")  # what a password holds is told to nobody

    def choose(self, name, entry):
        """An entry of a picker."""
        self.click(name, "combo box")
        self.click(entry, "list item")
        wait_until(lambda: self.find(name, "combo box")["text"] == entry, f"{entry} chosen")

    def try_to(self, action, role, name):
        """As assistive technology does without a pointer: to "focus" or "press" what begins so. False
        when there is nothing of the kind."""
        return self._ask(name=name, role=role, action=action)

    def act(self, action, role, name):
        wait_until(lambda: self.try_to(action, role, name), f"{action} {name}")

    def tree(self, window):
        """A line for each widget of a window: depth, role, name."""
        return self._ask(tree=window)


def main():
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi

    interesting = ["checked", "enabled", "focused", "focusable", "selected", "expanded"]

    def states(node):
        found = node.get_state_set()
        return [name for name in interesting
                if found.contains(getattr(Atspi.StateType, name.upper()))]

    def name_of(node):
        """A picker is named by its label; its own name is what is chosen."""
        for relation in node.get_relation_set():
            if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY:
                return relation.get_target(0).get_name()
        return node.get_name()

    def described(node):
        place = Atspi.Component.get_extents(node, Atspi.CoordType.SCREEN)
        scale = float(os.environ.get("QT_SCALE_FACTOR", "1"))  # the toolkit tells unscaled places
        answer = {"role": node.get_role_name(), "name": name_of(node), "states": states(node),
                  "description": node.get_description(),
                  "place": [round(value * scale) for value in
                            (place.x, place.y, place.width, place.height)]}
        if node.get_role_name() == "combo box":
            answer["text"] = node.get_name()
        elif "Text" in Atspi.Accessible.get_interfaces(node):
            answer["text"] = Atspi.Text.get_text(node, 0, -1)
        return answer

    def children(node):
        for index in range(node.get_child_count()):
            child = node.get_child_at_index(index)
            if child is not None:
                yield child

    def showing(node):
        return node.get_state_set().contains(Atspi.StateType.SHOWING)

    def windows():
        for application in children(Atspi.get_desktop(0)):
            if "trandloom" in (application.get_name() or ""):
                application.set_cache_mask(Atspi.Cache.NONE)  # nobody here listens for changes
                application.clear_cache()
                yield from children(application)

    def walk(node, depth=0):
        if depth == 0 or showing(node):
            yield depth, node
            for child in children(node):
                yield from walk(child, depth + 1)

    def act(node, action):
        if action == "focus":
            return Atspi.Component.grab_focus(node)
        return Atspi.Action.do_action(node, 0)

    def answer(question):
        found = []
        for window in windows():
            if "tree" in question and window.get_name() != question["tree"]:
                continue
            for depth, node in walk(window):
                if "tree" in question:
                    found.append([depth, node.get_role_name(), name_of(node), states(node)])
                elif "action" in question:
                    if (node.get_role_name() == question["role"] and showing(node)
                            and name_of(node).startswith(question["name"])):
                        return act(node, question["action"])
                elif name_of(node) == question["name"] and showing(node):
                    found.append(described(node))
        return found

    for line in sys.stdin:
        try:
            result = answer(json.loads(line))
        except gi.repository.GLib.Error:  # a widget went while it was looked at
            result = []
        print(json.dumps(result), flush=True)


if __name__ == "__main__":
    main()
