# Shared by `run`, `test` and `.ci/run`; to be sourced by bash from the root of the repository.
#
#   volo_setup            brings what the machine lacks: packages of its own Debian, sources into the cache
#   volo_build PRESET     configures and builds build/PRESET
#
# The cache ($VOLO_CACHE, else the user's cache directory) survives the build tree: a second set-up needs no network.

volo_cache=${VOLO_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/volo-launcher}

volo_packages=(
  build-essential cmake ninja-build pkg-config git ca-certificates dpkg-dev
  libssl-dev libglfw3-dev libgl-dev libfontconfig-dev rapidjson-dev libstb-dev
  libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev fonts-roboto-unhinted
  xvfb xauth xdotool imagemagick x11-utils libgl1-mesa-dri tesseract-ocr tesseract-ocr-eng
  zenity xdg-utils python3 python3-cryptography unzip procps iproute2 util-linux strace
)

volo_say() { printf '[setup] %s\n' "$*"; }

volo_as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

volo_install_packages() {
  local missing=() package
  for package in "${volo_packages[@]}"; do
    [ "$(dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null)" = 'ii ' ] || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  volo_say "installing ${missing[*]}"
  local log
  log=$(mktemp)
  if volo_as_root apt-get -qq update >"$log" 2>&1 &&
     volo_as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq install --no-install-recommends "${missing[@]}" \
       >>"$log" 2>&1 </dev/null; then
    rm -f "$log"
  else
    tail -n 20 "$log" >&2
    rm -f "$log"
    return 1
  fi
}

# Elsewhere than on Debian the machine's owner installs what the build names as missing; the source libraries then come
# from their upstream repositories.
volo_name_missing_programs() {
  local program missing=()
  for program in c++ cmake ninja git pkg-config python3 Xvfb xdotool import tesseract; do
    command -v "$program" >/dev/null || missing+=("$program")
  done
  volo_say "no dpkg here: the libraries are expected to be installed, their sources come from upstream"
  [ ${#missing[@]} = 0 ] || volo_say "missing programs: ${missing[*]}"
}

volo_setup() {
  volo_configure_options=()
  if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    volo_name_missing_programs
    return 0
  fi
  volo_install_packages || return 1
  cmake/fetch-sources "$volo_cache" || return 1
  volo_configure_options=(
    "-DFETCHCONTENT_SOURCE_DIR_IMGUI=$volo_cache/sources/imgui"
    "-DFETCHCONTENT_SOURCE_DIR_HTTPLIB=$volo_cache/sources/cpp-httplib"
    "-DFETCHCONTENT_SOURCE_DIR_MINIZ=$volo_cache/sources/miniz"
  )
  if command -v ccache >/dev/null; then
    volo_configure_options+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
}

# The whole log is shown only when something went wrong: the compiler says nothing else worth reading.
volo_build() {
  local preset=$1 log=build/$1.log
  mkdir -p build
  volo_say "building build/$preset"
  if ! { cmake --preset "$preset" "${volo_configure_options[@]}" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    grep -E 'error|Error|FAILED' "$log" | head -n 40 >&2
    volo_say "the build failed; all of it is in $log" >&2
    return 1
  fi
}
