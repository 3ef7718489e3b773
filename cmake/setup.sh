# Functions that ./run, ./test and ./release source: install missing packages, then configure and build a preset.
#
# On Debian, apt-get installs the missing packages. cmake/fetch-sources fetches the source libraries that Debian 12 does
# not have from newer suites of the same archive. On other systems the user installs the packages, and CMake fetches the
# source libraries from their upstream repositories.
#
# VOLO_CACHE     folder for downloads and for libraries built for Windows. Default: ~/.cache/volo-launcher
# VOLO_SOURCES   folder with imgui, httplib and miniz, to use instead of the fetched libraries. Such builds have a
#                separate build folder: build/<preset>-<name of the folder>

volo_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
volo_cache=${VOLO_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/volo-launcher}
if [ -n "${VOLO_SOURCES:-}" ]; then
  VOLO_SOURCES=$(cd "$VOLO_SOURCES" && pwd)
  export VOLO_BUILD_SUFFIX=-${VOLO_SOURCES##*/} # CMakePresets.json appends it to the name of the build folder
fi

volo_build_packages=(
  build-essential cmake ninja-build pkg-config git ca-certificates dpkg-dev libssl-dev libglfw3-dev libgl-dev
  libwayland-dev libfontconfig-dev libx11-dev libxcursor-dev libsystemd-dev libdeflate-dev rapidjson-dev libstb-dev
  libcli11-dev fonts-roboto-unhinted librsvg2-bin imagemagick
)
# Programs and drivers that a running launcher uses: dialogs, xdg-open, the OpenGL driver.
volo_desktop_packages=(zenity xdg-utils libgl1-mesa-dri libegl1)
# A virtual screen, and the tools that read it and send input to it.
volo_screen_packages=(xvfb xauth xdotool tesseract-ocr tesseract-ocr-eng x11-utils procps python3 fonts-droid-fallback)
# Test libraries, and independent tools with which the tests compare results.
volo_test_packages=(
  libgtest-dev libgmock-dev openssl python3-cryptography unzip zip p7zip-full libarchive-tools iproute2 strace
)
# The cross-compiler, Wine, and a source package that is built for Windows.
volo_windows_packages=(g++-mingw-w64-x86-64-posix wine wine64 googletest)
# A browser, and the tool that makes it trust a certificate authority.
volo_browser_packages=(chromium libnss3-tools)
volo_clang_packages=(clang clang-tidy libclang-rt-dev)
# Tools that check packages, and NSIS, which makes the Windows installer.
volo_package_packages=(file desktop-file-utils appstream nsis)
# The tools of docs/deploying.md. Only ./release installs them, because nginx's package also starts a server.
volo_deploying_packages=(nginx-light rsync rclone curl)

volo_say() { printf '[set-up] %s\n' "$*"; }

volo_on_debian() { [ "$(. /etc/os-release 2>/dev/null && echo "${ID:-}")" = debian ]; }

# volo_install_packages PACKAGE...
volo_install_packages() {
  if ! volo_on_debian; then
    volo_say "this is not Debian: README.md lists what has to be installed"
    return 0
  fi
  local missing=() package root=()
  for package in "$@"; do
    dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  [ "$(id -u)" = 0 ] || root=(sudo)
  mkdir -p "$volo_cache"
  volo_say "installing ${missing[*]}"
  local log=$volo_cache/apt-get.log
  if ! { "${root[@]}" apt-get -q update &&
         "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q install -y --no-install-recommends "${missing[@]}"; } \
       > "$log" 2>&1 < /dev/null; then
    tail -n 20 "$log" >&2
    volo_say "the packages could not be installed" >&2
    return 1
  fi
}

# volo_build_folder PRESET: prints the preset's build folder.
volo_build_folder() { echo "$volo_root/build/$1${VOLO_BUILD_SUFFIX:-}"; }

# volo_configure PRESET [CMAKE_OPTION...]
volo_configure() {
  local preset=$1 options=("${@:2}") sources=${VOLO_SOURCES:-}
  mkdir -p "$volo_cache"
  if volo_on_debian && { [ -z "$sources" ] || [ "$preset" = windows ]; }; then
    "$volo_root/cmake/fetch-sources" "$volo_cache" "$preset"
    sources=${sources:-$volo_cache/sources}
  fi
  if [ -n "$sources" ]; then
    options+=(-DFETCHCONTENT_SOURCE_DIR_IMGUI="$sources/imgui" -DFETCHCONTENT_SOURCE_DIR_HTTPLIB="$sources/httplib"
              -DFETCHCONTENT_SOURCE_DIR_MINIZ="$sources/miniz")
  fi
  if volo_on_debian && [ "$preset" = windows ]; then
    local libraries
    libraries=$("$volo_root/cmake/build-windows-libraries" "$volo_cache") || return 1
    options+=(-DVOLO_WINDOWS_LIBRARIES="$libraries")
  fi
  if command -v ccache >/dev/null; then
    export CCACHE_SLOPPINESS=pch_defines,time_macros # otherwise ccache does not cache sources with a precompiled header
    options+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  (cd "$volo_root" && cmake --preset "$preset" "${options[@]}" > "$volo_cache/configure-$preset.log" 2>&1) ||
    { cat "$volo_cache/configure-$preset.log" >&2; return 1; }
}

# volo_build PRESET [TARGET...]: configures the preset and builds the targets, or everything.
# If targets are given, a new build folder is configured without the tests, because the tests need more packages.
volo_build() {
  local preset=$1 options=(-DVOLO_BUILD_TESTS=ON) targets=()
  shift
  if [ $# -gt 0 ]; then
    targets=(--target "$@")
    options=()
    [ -e "$(volo_build_folder "$preset")/CMakeCache.txt" ] || options=(-DVOLO_BUILD_TESTS=OFF)
  fi
  volo_say "building the preset $preset"
  volo_configure "$preset" "${options[@]}" || return 1
  (cd "$volo_root" && cmake --build --preset "$preset" "${targets[@]}")
}
