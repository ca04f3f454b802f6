# Sourced by the steps beside this file, which scripts/doors runs. Makes a home and a runtime directory
# for an owner, both empty; everything that the step starts is ended with it.
#
# On top of a step, two lines for the runner:
#   # form: short         it takes part in scripts/doors --short; or "long"
#   # packages: NAME …    Debian packages that it needs
set -euo pipefail

sources="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
prefix="$QUENLET_PREFIX"  # where quenlet is installed
scratch="$(mktemp -d "$QUENLET_SCRATCH/step.XXXXXX")"
export HOME="$scratch/home" XDG_RUNTIME_DIR="$scratch/runtime" PATH="$prefix/bin:$PATH" LC_ALL=C.UTF-8
mkdir -m 700 "$HOME" "$XDG_RUNTIME_DIR"
unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME DISPLAY WAYLAND_DISPLAY \
  DBUS_SESSION_BUS_ADDRESS DBUS_SYSTEM_BUS_ADDRESS
cd "$scratch"

declare -A processes=()  # by the names that start() gave them

fail() {
  local log
  printf 'FAILED: %s\n' "$*" >&2
  for log in "$scratch"/*.log; do
    [[ ! -s "$log" ]] || { printf -- '-- %s\n' "${log##*/}" && tail -n 40 "$log"; } >&2
  done
  exit 1
}

# start NAME COMMAND...: in the background, its output in NAME.log.
start() {
  local name="$1"
  shift
  "$@" >>"$scratch/$name.log" 2>&1 </dev/null &
  processes[$name]=$!
}

# stop NAME [SIGNAL]: and waits for its end.
stop() {
  local id="${processes[$1]-}"
  [[ -n "$id" ]] || return 0
  unset "processes[$1]"
  kill "-${2-TERM}" "$id" 2>/dev/null || true
  wait "$id" || true
}

# Steps that need more to be undone define a function `undo`.
cleanUp() {
  local name
  if declare -F undo >/dev/null; then undo || true; fi
  for name in "${!processes[@]}"; do stop "$name"; done
}
trap cleanUp EXIT

# waitFor SECONDS COMMAND...: runs it until it succeeds.
waitFor() {
  local deadline=$((SECONDS + $1))
  shift
  until "$@" >/dev/null 2>&1; do
    ((SECONDS <= deadline)) || fail "waited in vain for: $*"
    sleep 0.1
  done
}

# startBus session|system [DIRECTORY...]: a bus of our own, whose address is in the environment from then
# on. It starts what the service files in the directories say, and nothing of this system's.
startBus() {
  local kind="$1" address="unix:path=$scratch/$1-bus" directory
  shift
  {
    echo '<busconfig>'
    # One of type "system" would start services by a helper, as other users.
    echo "<type>session</type><listen>$address</listen><auth>EXTERNAL</auth>"
    for directory in "$@"; do echo "<servicedir>$directory</servicedir>"; done
    # What a session's bus allows: by default it is a system's.
    echo '<limit name="max_replies_per_connection">50000</limit>'
    echo '<policy context="default"><allow send_destination="*" eavesdrop="true"/>'
    echo '<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>'
  } >"$scratch/$kind-bus.conf"
  start "$kind-bus" dbus-daemon --nofork --nopidfile --nosyslog "--config-file=$scratch/$kind-bus.conf"
  export "DBUS_${kind^^}_BUS_ADDRESS=$address"
  waitFor 10 test -S "$scratch/$kind-bus"
}

startAgent() {
  start agent "$prefix/libexec/quenlet-agent"
  waitFor 20 quenlet card
}
stopAgent() { stop agent; }

cardHas() { quenlet card --wide | grep -F -- "$1" >/dev/null; }
# expectOnCard TEXT...: each of them is there exactly once.
expectOnCard() {
  local text count
  for text in "$@"; do
    count="$(quenlet card --wide | grep -cF -- "$text" || true)"
    ((count == 1)) || fail "on the card $count times: $text"
  done
}
# expectExit CODE COMMAND...
expectExit() {
  local expected="$1" code=0
  shift
  "$@" >"$scratch/last.log" 2>&1 || code=$?
  ((code == expected)) || fail "ends with $code, not $expected: $*"
}
