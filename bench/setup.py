"""Sets the machine up for bench/compare and bench/growth."""

import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/linux"
# The references, and what reads and drives a virtual screen.
PACKAGES = ("curl nginx-light openssl unzip libarchive-tools chromium xvfb xauth xdotool tesseract-ocr "
            "tesseract-ocr-eng imagemagick python3 fonts-droid-fallback")
TARGETS = "volo-launcher volo-bench volo-minimal-window volo_frame_watch volo-sandbox volo-publish"


def prepare():
    """Installs the packages, and builds what is measured."""
    script = (f'. "{ROOT}/cmake/setup.sh" && volo_install_packages "${{volo_build_packages[@]}}" '
              f'"${{volo_desktop_packages[@]}}" {PACKAGES} && volo_build linux {TARGETS}')
    subprocess.run(["bash", "-c", script], check=True, stdout=subprocess.DEVNULL)


def tmpfs():
    """A folder for the work in memory. None: the default for temporary files."""
    memory = pathlib.Path("/dev/shm")
    return memory if memory.is_dir() else None
