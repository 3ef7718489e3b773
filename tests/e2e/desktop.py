"""A desktop for a robot: a virtual screen, windows on it, real mouse and keys, and eyes that read.

Everything goes through the X server and a text recogniser, as a person's hands and eyes would; nothing here knows how
the programs on the screen are made. Places are pixels inside a window."""

import contextlib
import ctypes
import ctypes.util
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time

DEADLINE = float(os.environ.get("VOLO_E2E_DEADLINE", "30"))  # for whatever is waited for
ENLARGED = 3  # times, before reading


class NotSeen(Exception):
    """What should have shown or happened did not, within the deadline."""


def wait_for(what, condition, deadline=DEADLINE, pause=0.03):
    """Returns the first true answer of `condition`."""
    end = time.monotonic() + deadline
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise NotSeen(f"{what}, within {deadline:.0f} s")
        time.sleep(pause)


def missing_programs():
    return [name for name in ("Xvfb", "xdotool", "import", "convert", "tesseract") if shutil.which(name) is None]


class Desktop:
    """A virtual screen of its own, gone when the `with` block ends."""

    def __init__(self, width=1280, height=800):
        self.size = f"{width}x{height}x24"

    def __enter__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            # Without -noreset it starts anew whenever its last client leaves, and throws out who just comes in.
            ["Xvfb", "-displayfd", str(write), "-screen", "0", self.size, "-nolisten", "tcp", "-noreset"],
            pass_fds=[write], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as answer:
            number = answer.readline().strip()  # Xvfb picks a free one, and tells once it can be used
        if not number:
            raise NotSeen("the virtual screen")
        self.display = ":" + number
        self.environment = {**os.environ, "DISPLAY": self.display, "OMP_THREAD_LIMIT": "1"}
        self.environment.pop("WAYLAND_DISPLAY", None)
        self.environment.pop("XAUTHORITY", None)
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()

    def run(self, *command, text_in=None):
        try:
            done = subprocess.run(command, env=self.environment, input=text_in, capture_output=True, check=False,
                                  timeout=DEADLINE)
        except subprocess.TimeoutExpired:  # some tools wait for ever for a window that has gone
            raise NotSeen(f"an answer of {command[0]}") from None
        return done.returncode, done.stdout

    def windows(self, title):
        """The windows with exactly this title that a person can see."""
        return self.run("xdotool", "search", "--onlyvisible", "--name", f"^{title}$")[1].decode().split()

    def window(self, title, deadline=DEADLINE):
        return Window(self, wait_for(f'a window "{title}"', lambda: self.windows(title), deadline)[-1])


class Window:
    def __init__(self, desktop, identifier):
        self.desktop = desktop
        self.identifier = identifier
        self.come_forward()

    def tool(self, *arguments):
        status, output = self.desktop.run("xdotool", *arguments)
        if status != 0:
            raise NotSeen("xdotool " + " ".join(arguments) + " worked")
        return output.decode()

    def come_forward(self):
        """There is no window manager: what a click on the title bar would do is done here."""
        self.tool("windowraise", self.identifier, "windowfocus", "--sync", self.identifier)

    def size(self):
        fields = dict(re.findall(r"(\w+)=(\d+)", self.tool("getwindowgeometry", "--shell", self.identifier)))
        return int(fields["WIDTH"]), int(fields["HEIGHT"])

    # --- hands ---------------------------------------------------------------------------------------------------

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
        """The cross of the title bar: asks the program, which may take its time."""
        close_window(self.desktop.display, int(self.identifier))

    # --- eyes ----------------------------------------------------------------------------------------------------

    def picture(self, path):
        self.desktop.run("import", "-silent", "-window", self.identifier, path)

    def look(self, box):
        """The pixels of a box: left, top, width, height."""
        left, top, width, height = (round(number) for number in box)
        return self.desktop.run("import", "-silent", "-window", self.identifier, "-crop",
                                f"{width}x{height}+{left}+{top}", "+repage", "-depth", "8", "ppm:-")[1]

    def read(self, box):
        return self.words_in(self.look(box))

    def words_in(self, pixels):
        return " ".join(self.recognise(pixels, "--psm", "6").split())

    def recognise(self, pixels, *how):
        """The recogniser likes large dark letters on a light ground."""
        enlarged = self.desktop.run("convert", "ppm:-", "-colorspace", "Gray", "-negate", "-auto-level", "-filter",
                                    "Lanczos", "-resize", f"{ENLARGED}00%", "pgm:-", text_in=pixels)[1]
        return self.desktop.run("tesseract", "-", "-", *how, text_in=enlarged)[1].decode()

    def see(self, text, box, deadline=DEADLINE):
        """Waits until a text can be read in the box. Reads again only when something there has changed."""
        last = {"pixels": None, "words": ""}

        def there():
            pixels = self.look(box)
            if pixels != last["pixels"]:
                last.update(pixels=pixels, words=self.words_in(pixels))
            return reads(text, last["words"])

        with told(lambda: f'"{text}" in the window; what stands there reads "{last["words"]}"'):
            wait_for("", there, deadline)

    def see_no(self, text, box, deadline=DEADLINE):
        wait_for(f'"{text}" gone from the window', lambda: not reads(text, self.read(box)), deadline)

    def find(self, text, box, deadline=DEADLINE):
        """Waits until a text can be read in the box, and returns the place of its middle."""
        return wait_for(f'"{text}" in the window', lambda: self.place_of(text, box), deadline)

    def place_of(self, text, box):
        rows = [line.split("\t") for line in self.recognise(self.look(box), "--psm", "11", "tsv").splitlines()[1:]]
        words = [(row[11], *map(int, row[6:10])) for row in rows if len(row) > 11 and row[11].strip()]
        wanted = [plain(word) for word in text.split()]
        for first in range(len(words) - len(wanted) + 1):
            found = words[first:first + len(wanted)]
            if [plain(word[0]) for word in found] == wanted:
                left, right = found[0][1], found[-1][1] + found[-1][3]
                middle = (left + right) / 2, found[0][2] + found[0][4] / 2
                return box[0] + middle[0] / ENLARGED, box[1] + middle[1] / ENLARGED
        return None

    def colour(self, x, y):
        """Red, green and blue of one pixel."""
        return tuple(self.look((x, y, 1, 1))[-3:])


@contextlib.contextmanager
def told(words):
    try:
        yield
    except NotSeen:
        raise NotSeen(words()) from None


def plain(text):
    """What remains when the recogniser's doubts about blanks, case and look-alikes are left out."""
    text = re.sub(r"[^a-z0-9@.:/+]", "", text.lower().replace("…", "..."))
    return text.translate(str.maketrans("l1|0", "iiio"))


def reads(text, words):
    """Whether a text stands in what was read. In long ones a letter in 25 may have been misread; short ones are exact."""
    text, words = plain(text), plain(words)
    mistakes = [0] * (len(words) + 1)  # of the text so far, ending at each place of what was read
    for number, letter in enumerate(text, 1):
        above, mistakes[0] = mistakes[0], number
        for place, seen in enumerate(words, 1):
            above, mistakes[place] = mistakes[place], min(
                above + (letter != seen), mistakes[place] + 1, mistakes[place - 1] + 1)
    return min(mistakes) <= len(text) // 25


def close_window(display, window):
    """Sends WM_DELETE_WINDOW, as a window manager does."""
    library = ctypes.CDLL(ctypes.util.find_library("X11") or "libX11.so.6")

    class ClientMessage(ctypes.Structure):
        _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                    ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                    ("format", ctypes.c_int), ("data", ctypes.c_long * 5), ("padding", ctypes.c_long * 12)]

    library.XOpenDisplay.restype = ctypes.c_void_p
    library.XOpenDisplay.argtypes = [ctypes.c_char_p]
    library.XInternAtom.restype = ctypes.c_ulong
    library.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    library.XSendEvent.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_long, ctypes.c_void_p]
    library.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]
    library.XCloseDisplay.argtypes = [ctypes.c_void_p]
    connection = library.XOpenDisplay(display.encode())
    if not connection:
        raise NotSeen("the display")
    client_message, format_long = 33, 32
    protocols = library.XInternAtom(connection, b"WM_PROTOCOLS", 0)
    delete = library.XInternAtom(connection, b"WM_DELETE_WINDOW", 0)
    event = ClientMessage(type=client_message, window=window, message_type=protocols, format=format_long)
    event.data[0] = delete
    library.XSendEvent(connection, window, 0, 0, ctypes.byref(event))
    library.XSync(connection, 0)
    library.XCloseDisplay(connection)
