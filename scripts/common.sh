# What the scripts beside this file share. To be sourced; sets `root` and goes there.
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"

die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# Runs a command with its output kept back; shows all of it when the command fails.
quietly() {
  local log status=0
  log="$(mktemp)"
  "$@" >"$log" 2>&1 || status=$?
  if ((status != 0)); then
    printf '$ %s\n' "$*" >&2
    cat "$log" >&2
  fi
  rm -f "$log"
  return "$status"
}

# build PRESET [TARGET...]: configures and builds build/PRESET. A compiler cache is used when
# there is one, so that clones of the repository share their objects.
build() {
  local preset="$1"
  shift
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1
  fi
  quietly cmake --preset "$preset"
  quietly cmake --build --preset "$preset" --parallel "$(nproc)" ${1:+--target "$@"}
}

# The C++ sources that match the given git path patterns, each ended by a NUL. Ignored files are not
# among them, new ones are.
sources() {
  local file
  git ls-files -z --cached --others --exclude-standard --deduplicate -- "$@" |
    while IFS= read -r -d '' file; do
      if [[ "$file" == *.@(cpp|h) && -f "$file" ]]; then printf '%s\0' "$file"; fi
    done
}
