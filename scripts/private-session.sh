#!/usr/bin/env bash
# Runs a command in an environment of its own: runtime folder, home folder, session bus and, on request,
# a display and a sound server. Nothing of the caller's desktop is seen, heard or changed, several
# of these may run side by side, and everything started here is stopped at the end.
#
#   private-session.sh [--audio] [--period SAMPLES] [--pulseaudio] [--display] [--awake]
#                      COMMAND [ARGUMENT...]
#
#   --display         an Xvfb screen of 1440 x 900 with the openbox window manager
#   --audio           PipeWire with the virtual output "out" (48 kHz, mono) as the default; what is
#                     played can be recorded from "out.monitor"
#   --period SAMPLES  PipeWire's period, 2048 if nothing else is said
#   --pulseaudio      PulseAudio in the place of PipeWire
#   --awake           no processor sleeps when it has nothing to do: a virtual one may be late by tens
#                     of milliseconds to wake up; needs write access to /dev/cpu_dma_latency
#
# The exit code is COMMAND's; 125 when the environment itself could not be set up.
set -euo pipefail

want_audio=0
want_display=0
want_awake=0
audio_server=pipewire
period=2048
while [ $# -gt 0 ]; do
    case $1 in
        --audio) want_audio=1 ;;
        --display) want_display=1 ;;
        --awake) want_awake=1 ;;
        --period) period=${2:?--period needs a number of samples}; shift ;;
        --pulseaudio) audio_server=pulseaudio ;;
        --) shift; break ;;
        -*) echo "private-session: unknown option $1" >&2; exit 125 ;;
        *) break ;;
    esac
    shift
done
if [ $# -eq 0 ]; then
    echo "usage: private-session.sh [--audio] [--period SAMPLES] [--pulseaudio] [--display] [--awake]" \
        "COMMAND [ARGUMENT...]" >&2
    exit 125
fi

base=$(mktemp -d "${TMPDIR:-/tmp}/ostrine-session.XXXXXXXX")
logs=$base/log
pids=()
command_pid=

# Ends every process which still carries this session's runtime folder in its environment. The bus and
# the accessibility service start helpers by themselves whose ids are not known here.
stop_helpers() {
    local signal=$1 environment pid
    for environment in /proc/[0-9]*/environ; do
        pid=${environment#/proc/}
        pid=${pid%/environ}
        # The sub-shells of this script inherited the variable as well.
        [ "$pid" != "$$" ] && [ "$pid" != "$BASHPID" ] || continue
        if tr '\0' '\n' <"$environment" 2>/dev/null | grep -qxF "XDG_RUNTIME_DIR=$base/run"; then
            kill "-$signal" "$pid" 2>/dev/null || true
        fi
    done 2>/dev/null
}

any_alive() {
    local pid
    for pid in "$@"; do
        kill -0 "$pid" 2>/dev/null && return 0
    done
    return 1
}

clean_up() {
    local code=$? i
    trap '' INT TERM HUP
    trap - EXIT
    set +e
    if [ -n "$command_pid" ]; then
        kill -TERM -- "-$command_pid" 2>/dev/null
    fi
    # The last started goes first: the bus outlives its clients.
    for ((i = ${#pids[@]} - 1; i >= 0; --i)); do
        kill -TERM "${pids[i]}" 2>/dev/null
    done
    for ((i = 0; i < 30; ++i)); do
        any_alive "${pids[@]}" ${command_pid:+"$command_pid"} || break
        sleep 0.1
    done
    stop_helpers TERM
    for pid in "${pids[@]}"; do
        kill -KILL "$pid" 2>/dev/null
    done
    if [ -n "$command_pid" ]; then
        kill -KILL -- "-$command_pid" 2>/dev/null
    fi
    stop_helpers KILL
    wait 2>/dev/null
    rm -rf "$base"
    exit "$code"
}
trap clean_up EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# The caller's desktop must not leak in: neither its screen and sound nor settings which change how
# the program looks or which file dialog it opens.
unset DISPLAY WAYLAND_DISPLAY XAUTHORITY DBUS_SESSION_BUS_ADDRESS AT_SPI_BUS_ADDRESS
unset XDG_CURRENT_DESKTOP XDG_SESSION_TYPE XDG_SESSION_DESKTOP DESKTOP_SESSION XDG_DATA_DIRS XDG_CONFIG_DIRS
for name in $(compgen -e | grep -E '^(PULSE_|PIPEWIRE_|QT_|QSG_)' || true); do
    unset "$name"
done

export XDG_RUNTIME_DIR=$base/run
export HOME=$base/home
export XDG_CONFIG_HOME=$HOME/.config XDG_CACHE_HOME=$HOME/.cache
export XDG_DATA_HOME=$HOME/.local/share XDG_STATE_HOME=$HOME/.local/state
export LC_ALL=C.UTF-8
mkdir -p "$logs" "$HOME/Desktop" "$XDG_CONFIG_HOME" "$XDG_CACHE_HOME" "$XDG_DATA_HOME" "$XDG_STATE_HOME"
mkdir -m 700 "$XDG_RUNTIME_DIR"

fail() {
    local name=$1
    echo "private-session: $name did not come up" >&2
    if [ -f "$logs/$name" ]; then
        sed "s/^/private-session: $name: /" "$logs/$name" >&2
    fi
    exit 125
}

# start NAME COMMAND...: in the background, logged under NAME, ended with this script even if that is
# killed without a chance to clean up.
start() {
    local name=$1
    shift
    command -v "$1" >/dev/null || { echo "$1: not installed" >"$logs/$name"; fail "$name"; }
    setpriv --pdeathsig TERM "$@" >"$logs/$name" 2>&1 </dev/null &
    pids+=($!)
}

# await NAME CONDITION...: until CONDITION holds, for at most 20 s and while the process last started lives.
await() {
    local name=$1 deadline=$((SECONDS + 20))
    shift
    until "$@" >/dev/null 2>&1; do
        any_alive "${pids[-1]}" && [ "$SECONDS" -lt "$deadline" ] || fail "$name"
        sleep 0.05
    done
}

default_sink_is_out() { pactl get-default-sink | grep -qx out; }
window_manager_answers() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }

export DBUS_SESSION_BUS_ADDRESS=unix:path=$XDG_RUNTIME_DIR/bus
start dbus-daemon dbus-daemon --session --nofork --nopidfile "--address=$DBUS_SESSION_BUS_ADDRESS"
await dbus-daemon dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.GetId

if [ "$want_display" -eq 1 ]; then
    # The server picks a free number itself, so that two sessions cannot agree on the same one.
    exec {number_fd}>"$base/display-number"
    start Xvfb Xvfb -displayfd "$number_fd" -screen 0 1440x900x24 -dpi 96 -nolisten tcp -noreset
    exec {number_fd}>&-
    await Xvfb grep -q . "$base/display-number"
    DISPLAY=:$(cat "$base/display-number")
    export DISPLAY QT_QPA_PLATFORM=xcb
    await Xvfb xprop -root
    start openbox openbox --sm-disable
    await openbox window_manager_answers
fi

if [ "$want_awake" -eq 1 ]; then
    # The kernel holds to the latency written, 0 us, while the file is open: until this script ends.
    { exec {awake_fd}>/dev/cpu_dma_latency && printf '\0\0\0\0' >&"$awake_fd"; } 2>"$logs/awake" || fail awake
fi

start_pipewire() {
    # The sound cards of this machine stay with whoever uses them now.
    for monitor in main:alsa main:v4l2 main:libcamera bluetooth:bluez; do
        folder=$XDG_CONFIG_HOME/wireplumber/${monitor%%:*}.lua.d
        mkdir -p "$folder"
        echo "if ${monitor##*:}_monitor then ${monitor##*:}_monitor.enabled = false end" \
            >"$folder/60-no-${monitor##*:}.lua"
    done
    # A short period tears holes into the sound as soon as something else runs. A recorder that asks
    # for a small latency must not bring one about.
    mkdir -p "$XDG_CONFIG_HOME/pipewire/pipewire.conf.d"
    echo "context.properties = { default.clock.quantum = $period, default.clock.min-quantum = $period," \
        "default.clock.max-quantum = $period }" >"$XDG_CONFIG_HOME/pipewire/pipewire.conf.d/60-period.conf"
    start pipewire pipewire
    await pipewire test -S "$XDG_RUNTIME_DIR/pipewire-0"
    start wireplumber wireplumber
    start pipewire-pulse pipewire-pulse
}

if [ "$want_audio" -eq 1 ]; then
    export PULSE_SERVER=unix:$XDG_RUNTIME_DIR/pulse/native
    if [ "$audio_server" = pipewire ]; then
        start_pipewire
        await pipewire-pulse pactl info
    else
        start pulseaudio pulseaudio -n --daemonize=no --exit-idle-time=-1 \
            --load="module-native-protocol-unix socket=$XDG_RUNTIME_DIR/pulse/native"
        await pulseaudio pactl info
    fi
    pactl load-module module-null-sink sink_name=out rate=48000 channels=1 channel_map=mono \
        >"$logs/null-sink" 2>&1 || fail null-sink
    # Which output is the default is decided by wireplumber, which may still be starting.
    pactl set-default-sink out >>"$logs/null-sink" 2>&1 || true
    await "${audio_server/pipewire/wireplumber}" default_sink_is_out
fi

# A session of its own for the command, so that all it starts can be ended through its process group.
setsid setpriv --pdeathsig TERM "$@" <&0 &
command_pid=$!
code=0
wait "$command_pid" || code=$?
exit "$code"
