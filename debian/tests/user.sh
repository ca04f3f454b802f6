# Sourced by the tests as root. Creates an ordinary user whose systemd runs the installed units.
set -euo pipefail

user="quenlet-$(basename "$0")"
useradd --create-home --home-dir "/home/$user" --shell /bin/sh "$user"
uid="$(id -u "$user")"
runtime="/run/user/$uid"
install -d -m 700 -o "$user" -g "$user" "$runtime"
# The agent trusts no program of which a user could replace the folder.
trusted="/opt/$user"
install -d -m 755 "$trusted"

fail() {
  echo "FAILED: $*" >&2
  cat "$trusted/manager.log" >&2
  exit 1
}

# As after logging in. The manager needs control groups of its own.
group="/sys/fs/cgroup/$user"
mkdir "$group"
chown -R "$user:" "$group"
asUser() {
  setpriv --reuid "$user" --regid "$user" --init-groups --inh-caps=-all --bounding-set=-all \
    env -i --chdir="/home/$user" HOME="/home/$user" USER="$user" PATH=/usr/bin:/bin LC_ALL=C.UTF-8 \
    XDG_RUNTIME_DIR="$runtime" "$@"
}
(
  echo "$BASHPID" >"$group/cgroup.procs"
  SYSTEMD_LOG_TARGET=console asUser /lib/systemd/systemd --user >"$trusted/manager.log" 2>&1
) &
manager=$!

# waitFor COMMAND...: runs it until it succeeds, for 20 s at most.
waitFor() {
  local try
  for ((try = 0; try < 200; try++)); do
    if "$@" >/dev/null 2>&1; then return; fi
    sleep 0.1
  done
  fail "waited 20 s in vain for $*"
}

endUser() {
  asUser systemctl --user exit || true
  wait "$manager" || true
  find "$group" -depth -type d -exec rmdir {} +
}

# entitle PROGRAM: as an administrator does.
entitle() {
  install -d -m 755 /etc/quenlet/entitlements
  cat >"/etc/quenlet/entitlements/${1//\//-}.plist" <<PLIST
<plist version="1.0"><dict><key>$1</key>
<dict><key>ovaro.private.contacts</key><true/></dict></dict></plist>
PLIST
  chmod 644 "/etc/quenlet/entitlements/${1//\//-}.plist"
}

# card PHONE-NUMBER
card() {
  printf '%s\r\n' BEGIN:VCARD VERSION:4.0 'FN:Anna Berg' 'N:Berg;Anna;;;' 'EMAIL:anna@example.org' \
    "TEL:$1" END:VCARD
}
donate() { card "+49 30 1234567" | asUser quenlet donate - --bundle com.example.mail; }

trap endUser EXIT
waitFor asUser systemctl --user is-system-running
