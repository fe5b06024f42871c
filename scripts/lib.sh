# Shared by the scripts of this folder; sourced, never run.
# shellcheck shell=bash disable=SC2034

set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"
export LC_ALL=C.UTF-8
jobs=$(nproc)
# One checkout's objects serve another one's.
export CCACHE_BASEDIR="$top" CCACHE_NOHASHDIR=1

say() { printf '\n==> %s\n' "$*"; }
fail() { printf 'error: %s\n' "$*" >&2; exit 1; }

# What compiling needs.
build_packages=(
  build-essential ccache cmake libcjson-dev libcli11-dev libgsf-1-dev libjpeg62-turbo-dev libminizip-dev libpng-dev
  libqpdf-dev libsane-dev libtesseract-dev libtiff-dev libtinyxml-dev libturbojpeg0-dev libxcb1-dev fonts-noto-cjk
  librsvg2-bin ninja-build pkg-config qtbase5-dev qtbase5-dev-tools qttools5-dev qttools5-dev-tools zlib1g-dev)
# What text recognition reads with.
model_packages=(tesseract-ocr-chi-sim tesseract-ocr-eng tesseract-ocr-osd)
# What a run needs on a machine without a display.
display_packages=(imagemagick openbox x11-utils xauth xdotool xvfb)
# What the tests need beyond that.
test_packages=(
  "${display_packages[@]}" "${model_packages[@]}" catdoc git libgmock-dev libgtest-dev libimage-exiftool-perl
  libsane1 libx11-dev libsane-common libtiff-tools locales libxml2-utils poppler-utils procps qpdf sane-utils unzip)
fuzz_packages=(clang-14 libclang-rt-14-dev)
lint_packages=(git clang-format-14 clang-tidy-14 libxml2-utils shellcheck)
bench_packages=(
  debian-reference-en debian-reference-zh-cn fonts-liberation libbenchmark-dev libjpeg-turbo-progs libx11-dev
  img2pdf libreoffice-calc-nogui ocrmypdf poppler-utils tesseract-ocr-chi-sim tesseract-ocr-eng time unpaper)
# Programs that open the library's files, none of them ours.
reader_packages=(catdoc imagemagick libimage-exiftool-perl libtiff-tools libxml2-utils poppler-utils qpdf unzip)
office_packages=(
  chromium default-jre-headless libactivation-java libjaxb-api-java libpdfbox2-java libreoffice-calc-nogui
  libreoffice-writer-nogui)

# Installs those of the packages that are missing; asks for nothing when none is.
need_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' \
      || missing+=("$package")
  done
  [ "${#missing[@]}" -eq 0 ] && return 0
  command -v apt-get >/dev/null || fail "these packages are missing: ${missing[*]}"
  local root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "install these packages, or sudo: ${missing[*]}"
    root=(sudo)
  fi
  say "installing ${missing[*]}"
  "${root[@]}" apt-get update -qq
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# Configures a preset once; CMake itself asks for it again when it must.
configure_preset() {
  local preset=$1
  [ -f "build/$preset/build.ninja" ] && return 0
  mkdir -p build
  cmake --preset "$preset" >"build/$preset.log" 2>&1 || { cat "build/$preset.log"; fail "configuring $preset"; }
}

build_preset() {
  configure_preset "$1"
  cmake --build --preset "$1" -j "$jobs"
}
