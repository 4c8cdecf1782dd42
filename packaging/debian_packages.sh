# The Debian 12 packages that the project needs, and a function that installs them. This file is sourced by other
# scripts, such as ./run and .ci/run.

build_packages=(g++ cmake ninja-build qtbase5-dev zlib1g-dev nlohmann-json3-dev libcli11-dev fonts-dejavu-core)
viewer_packages=(
  libopencv-dev libopencv-videoio-dev libexif-dev libceres-dev libqwt-qt5-dev libqt5svg5-dev pkg-config
)
python_packages=(python3-dev python3-pybind11 python3-numpy)
test_packages=(
  "${viewer_packages[@]}" "${python_packages[@]}" libgtest-dev libgmock-dev libcairo2-dev
  xvfb xauth openbox xdotool x11-utils x11-apps imagemagick procps strace
  poppler-utils qpdf librsvg2-bin python3-ezdxf
  python3-opencv python3-yaml mypy desktop-file-utils appstream man-db
)
lint_packages=(clang lld clang-format clang-tidy git dpkg-dev lintian)

# install_packages NAME...: installs the packages that are missing. Prints nothing if all are installed.
install_packages() {
  local missing=() name
  if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    echo "dpkg-query or apt-get is missing, so nothing can be installed here automatically." >&2
    echo "The required packages have these names in Debian: $*" >&2
    echo "Install them, and then set LMCALTAB_SKIP_INSTALL=1." >&2
    [ -n "${LMCALTAB_SKIP_INSTALL:-}" ]
    return
  fi
  for name in "$@"; do
    dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null | grep -q '^installed' || missing+=("$name")
  done
  [ ${#missing[@]} -gt 0 ] || return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "Missing packages: ${missing[*]}" >&2
      echo "Install them as root (apt-get install ...), or install sudo." >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing: ${missing[*]}"
  local log
  log=$(mktemp)
  if ! { "${as_root[@]}" apt-get update -q &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    return 1
  fi
  rm -f "$log"
}
