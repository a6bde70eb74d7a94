# Sourced by every script: go to the project's root, speak in steps, build with ccache.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

step() { printf '\n==> %s\n' "$*"; }

# build_preset NAME [TARGET...]: configure and build; what is up to date takes a second.
build_preset() {
  local preset=$1
  shift
  if command -v ccache >/dev/null; then
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" ${@:+--target "$@"}
}
