"""A virtual screen whose windows a script operates: mouse and keys through the X server, reading through a text
recogniser. Nothing here depends on how the programs are made. Places are pixels inside a window."""

import ctypes
import ctypes.util
import os
import re
import shutil
import subprocess
import time

DEADLINE = float(os.environ.get("VOLO_E2E_DEADLINE", "30"))  # seconds, for everything that is waited for
ENLARGED = 3  # factor before reading


class NotSeen(Exception):
    """What should have shown or happened did not, within the deadline."""


def check(what, fact):
    if not fact:
        raise NotSeen(what)


def wait_for(what, condition, deadline=DEADLINE):
    """Returns the first true result of `condition`. `what` is a text, or a function that returns one."""
    end = time.monotonic() + deadline
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise NotSeen(f"{what() if callable(what) else what}, within {deadline:.0f} s")
        time.sleep(0.03)


def missing_programs():
    return [name for name in ("Xvfb", "xdotool", "import", "convert", "tesseract") if shutil.which(name) is None]


class Desktop:
    """A virtual screen. It exists inside a `with` block."""

    def __enter__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            # Without -noreset Xvfb restarts when its last client leaves, and disconnects a client that just arrives.
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset"],
            pass_fds=[write], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as answer:
            number = answer.readline().strip()  # Xvfb writes a free number as soon as it accepts clients
        check("the virtual screen", number)
        self.display = ":" + number
        self.environment = {**os.environ, "DISPLAY": self.display, "OMP_THREAD_LIMIT": "1"}
        for name in ("WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS"):  # not the user's own desktop
            self.environment.pop(name, None)
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()

    def run(self, *command, text_in=None):
        try:
            done = subprocess.run(command, env=self.environment, input=text_in, capture_output=True, check=False,
                                  timeout=DEADLINE)
        except subprocess.TimeoutExpired:  # xdotool waits for ever for a window that has closed
            raise NotSeen(f"an answer of {command[0]}") from None
        return done.returncode, done.stdout

    def windows(self, title):
        """The visible windows with exactly this title."""
        return self.run("xdotool", "search", "--onlyvisible", "--name", f"^{title}$")[1].decode().split()

    def window(self, title):
        return Window(self, wait_for(f'a window "{title}"', lambda: self.windows(title))[-1])


class Window:
    def __init__(self, desktop, identifier):
        self.desktop = desktop
        self.identifier = identifier
        self.come_forward()

    def tool(self, *arguments):
        status, output = self.desktop.run("xdotool", *arguments)
        check("success of xdotool " + " ".join(arguments), status == 0)
        return output.decode()

    def come_forward(self):
        """Raises and focuses the window, as a window manager would after a click on the title bar."""
        self.tool("windowraise", self.identifier, "windowfocus", "--sync", self.identifier)

    # --- mouse and keys ------------------------------------------------------------------------------------------

    def point(self, x, y):
        self.tool("mousemove", "--window", self.identifier, str(round(x)), str(round(y)))

    def click(self, place, button=1):
        self.point(*place)
        self.tool("click", str(button))

    def type(self, text):
        self.tool("type", "--delay", "15", text)

    def press(self, *keys):
        self.tool("key", "--delay", "15", *keys)

    def close(self):
        """Asks the program to close the window, as the cross of the title bar does."""
        close_window(self.desktop.display, int(self.identifier))

    # --- reading -------------------------------------------------------------------------------------------------

    def picture(self, path):
        self.desktop.run("import", "-silent", "-window", self.identifier, path)

    def look(self, box):
        """The pixels of a box: left, top, width, height."""
        left, top, width, height = (round(number) for number in box)
        return self.desktop.run("import", "-silent", "-window", self.identifier, "-crop",
                                f"{width}x{height}+{left}+{top}", "+repage", "-depth", "8", "ppm:-")[1]

    def colour(self, x, y):
        """Red, green and blue of one pixel."""
        return tuple(self.look((x, y, 1, 1))[-3:])

    def recognise(self, pixels, *options):
        # tesseract reads large dark letters on a light ground best.
        enlarged = self.desktop.run("convert", "ppm:-", "-colorspace", "Gray", "-negate", "-auto-level", "-filter",
                                    "Lanczos", "-resize", f"{ENLARGED}00%", "pgm:-", text_in=pixels)[1]
        return self.desktop.run("tesseract", "-", "-", *options, text_in=enlarged)[1].decode()

    def see(self, text, box, gone=False):
        """Waits until a text can be read in the box, or no longer. Reads again only when the pixels have changed."""
        pixels = words = None

        def seen():
            nonlocal pixels, words
            before, pixels = pixels, self.look(box)
            if pixels != before:
                words = " ".join(self.recognise(pixels, "--psm", "6").split())
            return reads(text, words) != gone

        wait_for(lambda: f'"{text}" {"gone from" if gone else "in"} the window, which reads "{words}"', seen)

    def see_no(self, text, box):
        self.see(text, box, gone=True)

    def find(self, text, box):
        """Waits until a text can be read in the box, and returns its middle."""
        return wait_for(f'"{text}" in the window', lambda: self.place_of(text, box))

    def place_of(self, text, box):
        rows = [line.split("\t") for line in self.recognise(self.look(box), "--psm", "11", "tsv").splitlines()[1:]]
        words = [(plain(row[11]), *map(int, row[6:10])) for row in rows if len(row) > 11 and row[11].strip()]
        wanted = [plain(word) for word in text.split()]
        for first in range(len(words) - len(wanted) + 1):
            found = words[first:first + len(wanted)]
            if [word[0] for word in found] == wanted:
                middle = (found[0][1] + found[-1][1] + found[-1][3]) / 2, found[0][2] + found[0][4] / 2
                return box[0] + middle[0] / ENLARGED, box[1] + middle[1] / ENLARGED
        return None


def plain(text):
    """The text without blanks, case and punctuation, and with look-alike letters made equal."""
    text = re.sub(r"[^a-z0-9@.:/+]", "", text.lower().replace("…", "..."))
    return text.translate(str.maketrans("l1|0", "iiio"))


def reads(text, words):
    """Whether a text is a part of what was read. One letter in 25 may be misread; shorter texts must match exactly."""
    text, words = plain(text), plain(words)
    mistakes = [0] * (len(words) + 1)  # of the best match of the text so far that ends at each place of `words`
    for number, letter in enumerate(text, 1):
        above, mistakes[0] = mistakes[0], number
        for place, seen in enumerate(words, 1):
            above, mistakes[place] = mistakes[place], min(
                above + (letter != seen), mistakes[place] + 1, mistakes[place - 1] + 1)
    return min(mistakes) <= len(text) // 25


def close_window(display, window):
    """Sends WM_DELETE_WINDOW: xdotool 3.20160805 can only destroy a window."""
    library = ctypes.CDLL(ctypes.util.find_library("X11") or "libX11.so.6")
    pointer, number = ctypes.c_void_p, ctypes.c_ulong
    library.XOpenDisplay.restype = pointer
    library.XInternAtom.restype = number
    connection = pointer(library.XOpenDisplay(display.encode()))
    check("the display", connection)
    protocols, delete = (library.XInternAtom(connection, name, 0) for name in (b"WM_PROTOCOLS", b"WM_DELETE_WINDOW"))
    client_message, format_long = 33, 32
    # An XClientMessageEvent on a 64-bit system: type, serial, send_event, display, window, message type, format, data.
    event = (number * 24)(client_message, 0, 0, 0, window, protocols, format_long, delete)
    library.XSendEvent(connection, number(window), 0, ctypes.c_long(0), event)
    library.XSync(connection, 0)
    library.XCloseDisplay(connection)
