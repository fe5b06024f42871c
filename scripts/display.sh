# A display of our own for machines without one, and the steps of an operator on it; sourced, never run.
# shellcheck shell=bash

display_pids=()

# Starts Xvfb and a window manager; sets DISPLAY. stop_display ends exactly these processes.
start_display() {
  local size=${1:-1366x768} number
  mkdir -p build/display
  rm -f build/display/number
  Xvfb -displayfd 3 -screen 0 "${size}x24" -nolisten tcp >build/display/xvfb.log 2>&1 3>build/display/number &
  display_pids+=($!)
  for _ in $(seq 100); do
    number=$(cat build/display/number 2>/dev/null || true)
    [ -n "$number" ] && break
    sleep 0.1
  done
  [ -n "${number:-}" ] || fail "the virtual display did not start, see build/display/xvfb.log"
  export DISPLAY=":$number"
  unset WAYLAND_DISPLAY
  export XDG_RUNTIME_DIR="$PWD/build/display/runtime"
  mkdir -p "$XDG_RUNTIME_DIR"
  chmod 0700 "$XDG_RUNTIME_DIR"
  openbox >build/display/openbox.log 2>&1 &
  display_pids+=($!)
  sleep 0.5
}

stop_display() {
  local pid
  for pid in "${display_pids[@]}"; do
    kill "$pid" 2>/dev/null || true
  done
  display_pids=()
}

# wait_window NAME SECONDS: prints the id of the visible window with exactly this title.
wait_window() {
  local name=$1 seconds=$2 id
  for _ in $(seq $((seconds * 10))); do
    id=$(xdotool search --onlyvisible --name "^$name\$" 2>/dev/null | tail -n 1 || true)
    [ -n "$id" ] && { printf '%s\n' "$id"; return 0; }
    sleep 0.1
  done
  return 1
}

# screenshot FILE: the whole display.
screenshot() {
  import -window root "$1"
}
