# Shared by ./run and ./test (sourced): brings a machine to where the project builds, and configures a preset.
#
# On Debian missing packages are installed with apt-get, and the source libraries that Debian 12 lacks are taken from
# newer suites of the same archive (cmake/fetch-sources). Elsewhere the packages are left to the user, and CMake fetches
# the source libraries from their upstream repositories.

volo_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
volo_cache=${VOLO_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/volo-launcher}

volo_packages=(
  # to build
  build-essential cmake ninja-build pkg-config git ca-certificates dpkg-dev libssl-dev libglfw3-dev libgl-dev
  libfontconfig-dev libx11-dev libsystemd-dev rapidjson-dev libstb-dev libcli11-dev fonts-roboto-unhinted
  librsvg2-bin imagemagick
  # to test: libraries, independent tools, a screen without a display
  libgtest-dev libgmock-dev openssl python3 python3-cryptography unzip zip p7zip-full libarchive-tools
  fonts-droid-fallback
  xvfb xauth xdotool tesseract-ocr tesseract-ocr-eng x11-utils libgl1-mesa-dri procps iproute2 strace
  # to use: dialogs, the opener of the desktop
  zenity xdg-utils
)

# for `./test windows` alone: the compiler, a Windows to run it in, and what has to be compiled for it
volo_windows_packages=(g++-mingw-w64-x86-64-posix wine wine64 googletest)

volo_say() { printf '[set-up] %s\n' "$*"; }

volo_on_debian() { [ "$(. /etc/os-release 2>/dev/null && echo "${ID:-}")" = debian ]; }

# volo_install_packages PACKAGE...
volo_install_packages() {
  if ! volo_on_debian; then
    volo_say "this is not Debian: see README.md for what has to be installed"
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

# volo_build PRESET: configures and builds everything of a preset.
volo_build() {
  local preset=$1 options=()
  mkdir -p "$volo_cache"
  if volo_on_debian; then
    "$volo_root/cmake/fetch-sources" "$volo_cache" "$preset"
    options=(-DFETCHCONTENT_SOURCE_DIR_IMGUI="$volo_cache/sources/imgui"
             -DFETCHCONTENT_SOURCE_DIR_HTTPLIB="$volo_cache/sources/cpp-httplib"
             -DFETCHCONTENT_SOURCE_DIR_MINIZ="$volo_cache/sources/miniz")
    if [ "$preset" = windows ]; then
      local libraries
      libraries=$("$volo_root/cmake/build-windows-libraries" "$volo_cache") || return 1
      options+=(-DVOLO_WINDOWS_LIBRARIES="$libraries")
    fi
  fi
  if command -v ccache >/dev/null; then
    options+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  volo_say "building the preset $preset"
  (cd "$volo_root" && cmake --preset "$preset" "${options[@]}" > "$volo_cache/configure-$preset.log" 2>&1) ||
    { cat "$volo_cache/configure-$preset.log" >&2; return 1; }
  (cd "$volo_root" && cmake --build --preset "$preset")
}
