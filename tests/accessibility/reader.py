"""What a screen reader does: finds, reads and operates the tool by AT-SPI, and hears its announcements."""
import subprocess
import time

import gi

gi.require_version('Atspi', '2.0')
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE_S = 30
POLL_S = 0.02
RETURN, TAB = 0xff0d, 0xff09  # as X calls the keys


class Failure(Exception):
    pass


def accessible(get):
    """The result of a call, None if the object is gone."""
    try:
        return get()
    except GLib.Error:
        return None


class Reader:
    def __init__(self, command):
        Atspi.init()
        self.announcements = []
        self._listener = Atspi.EventListener.new(self._hear)
        for event in ('object:property-change:accessible-name', 'object:property-change:accessible-description',
                      'object:property-change:accessible-value', 'object:state-changed:checked',
                      'object:state-changed:enabled', 'object:state-changed:focused', 'window:activate'):
            self._listener.register(event)
        # Gives new windows the focus; of fonts, the display itself has this one.
        self._window_manager = subprocess.Popen(['evilwm', '-fn', 'fixed'])
        self._program = subprocess.Popen(command, stdout=subprocess.DEVNULL)
        self.tool = self.wait_for(self._application, 'the tool on the bus')
        self.tool.set_cache_mask(Atspi.Cache.NONE)

    def end(self):
        for process in (self._program, self._window_manager):
            process.terminate()
            process.wait(PATIENCE_S)

    # --- events ----------------------------------------------------------------------------------------------

    def _hear(self, event):
        source = event.source
        name = accessible(source.get_name) if source else None
        role = accessible(source.get_role_name) if source else None
        description = accessible(source.get_description) if source else None
        self.announcements.append((event.type, role, name or '', description or ''))

    def _listen(self):
        while GLib.MainContext.default().iteration(False):
            pass

    def wait_for(self, get, what):
        """The first true result of a function."""
        end = time.monotonic() + PATIENCE_S
        while True:
            self._listen()
            result = accessible(get)
            if result:
                return result
            if self._is_over() or time.monotonic() > end:
                raise Failure(f'not seen: {what}')
            time.sleep(POLL_S)

    def hears(self, kind, text, role=None):
        """Waits for an event of this kind whose object's name or description has the text."""
        def heard():
            return any(kind in event and text in name + description and role in (None, its_role)
                       for event, its_role, name, description in self.announcements)
        self.wait_for(heard, f'{kind} with "{text}"')
        self.announcements.clear()

    def _is_over(self):
        return self._program.poll() is not None

    # --- objects ---------------------------------------------------------------------------------------------

    def _application(self):
        desktop = Atspi.get_desktop(0)
        for number in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(number)
            if child and child.get_process_id() == self._program.pid:
                return child
        return None

    def windows(self):
        return [self.tool.get_child_at_index(i) for i in range(self.tool.get_child_count())]

    def below(self, parent):
        """The object and all below it that can be read."""
        if parent is None:
            return
        yield parent
        for number in range(min(accessible(parent.get_child_count) or 0, 200)):
            yield from self.below(accessible(lambda: parent.get_child_at_index(number)))

    def find(self, role, name=None, within=None, having=None):
        """The first shown object of this role and name, or whose name contains `having`."""
        def found():
            for root in [within] if within else self.windows():
                for each in self.below(root):
                    its_name = accessible(each.get_name) or ''
                    if accessible(each.get_role_name) == role and (name is None or its_name == name) and \
                            (having is None or having in its_name) and self.is_shown(each, role):
                        return each
            return None
        return self.wait_for(found, f'{role} "{name or having or ""}"')

    def described(self, role, description, within):
        """Combo boxes have their value as name."""
        return self.wait_for(lambda: next((each for each in self.below(within)
                                           if accessible(each.get_role_name) == role
                                           and (accessible(each.get_description) or '').startswith(description)), None),
                             f'{role} described as {description}')

    def window(self, having):
        def found():
            return next((each for each in self.windows() if having in (accessible(each.get_name) or '')), None)
        return self.wait_for(found, f'window "{having}"')

    # --- reading and acting ----------------------------------------------------------------------------------

    @staticmethod
    def has(thing, state):
        return thing.get_state_set().contains(state)

    def is_shown(self, thing, role):
        """Entries of closed menus and lists can be read and chosen as well."""
        return role.endswith(' item') or self.has(thing, Atspi.StateType.SHOWING)

    def can(self, thing):
        return self.has(thing, Atspi.StateType.ENABLED)

    @staticmethod
    def actions(thing):
        interface = thing.get_action_iface()
        return [interface.get_action_name(i) for i in range(interface.get_n_actions())] if interface else []

    def act(self, thing, *wanted):
        """Does the first of these actions that the object offers; without names any."""
        offered = self.actions(thing)
        for name in wanted or offered[:1]:
            if name in offered:
                thing.get_action_iface().do_action(offered.index(name))
                return
        raise Failure(f'{thing.get_role_name()} "{thing.get_name()}" offers {offered}, not {wanted}')

    def press(self, role, name, within=None):
        thing = self.find(role, name, within)
        self.wait_for(lambda: self.can(thing), f'"{name}" enabled')
        self.act(thing, 'Press', 'Toggle', 'ShowMenu')
        return thing

    @staticmethod
    def type(thing, text):
        thing.get_editable_text_iface().set_text_contents(text)

    @staticmethod
    def press_key(keysym):
        Atspi.generate_keyboard_event(keysym, None, Atspi.KeySynthType.SYM)

    def tab_to(self, thing):
        """Lists have no action that gives them the focus."""
        def focused():
            if self.has(thing, Atspi.StateType.FOCUSED):
                return True
            self.press_key(TAB)
            return False
        self.wait_for(focused, f'the focus at {thing.get_name()}')

    @staticmethod
    def value(thing):
        """The current value and its limits."""
        value = thing.get_value_iface()
        return value.get_current_value(), value.get_minimum_value(), value.get_maximum_value()

    def tree(self):
        """All objects with roles, names, descriptions, actions, for a failure's message."""
        lines = []

        def note(thing, depth):
            if thing is None:
                return
            lines.append(f'{"  " * depth}{accessible(thing.get_role_name)} "{accessible(thing.get_name)}"'
                         f' [{accessible(thing.get_description)}] {accessible(lambda: self.actions(thing))}')
            for number in range(min(accessible(thing.get_child_count) or 0, 60)):
                note(accessible(lambda: thing.get_child_at_index(number)), depth + 1)
        for window in self.windows():
            note(window, 0)
        return '\n'.join(lines)
