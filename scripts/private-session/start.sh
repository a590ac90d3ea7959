#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The inner part of ../private-session.sh: sets up the environment in the empty FOLDER and runs the command in it.
# The outer script stops what is started here.
#
#   start.sh FOLDER [OPTION...] COMMAND [ARGUMENT...]
set -euo pipefail

folder=$1
shift
audio_server=pipewire
period=
want_audio=
want_display=
want_awake=
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
[ $# -gt 0 ] || { echo "private-session: no command to run" >&2; exit 125; }

# When the outer script ends, everything here ends.
trap 'trap "" TERM; kill -TERM 0; exit 143' TERM

# Nothing of the caller's desktop may be used: neither its screen and sound, nor settings that change how the program
# looks or which file dialog it opens.
unset DISPLAY WAYLAND_DISPLAY XAUTHORITY DBUS_SESSION_BUS_ADDRESS AT_SPI_BUS_ADDRESS DESKTOP_SESSION
unset "${!XDG_@}" "${!PULSE_@}" "${!PIPEWIRE_@}" "${!QT_@}" "${!QSG_@}"
export HOME=$folder/home XDG_RUNTIME_DIR=$folder/run LC_ALL=C.UTF-8
mkdir -p "$folder/log" "$HOME/Desktop"
mkdir -m 700 "$XDG_RUNTIME_DIR"
cp -r "$(dirname "${BASH_SOURCE[0]}")/config" "$HOME/.config"

fail() {
    echo "private-session: $1 did not come up" >&2
    sed "s/^/private-session: $1: /" "$folder/log/$1" >&2
    exit 125
}

# start COMMAND...: runs it in the background, with a log named after the command.
start() {
    "$@" >"$folder/log/$1" 2>&1 </dev/null &
}

# await NAME CONDITION...: waits until CONDITION holds. Fails after 20 s, or when the process started last has ended.
await() {
    local name=$1 deadline=$((SECONDS + 20))
    shift
    until "$@" >/dev/null 2>&1; do
        kill -0 $! 2>/dev/null && [ "$SECONDS" -lt "$deadline" ] || fail "$name"
        sleep 0.05
    done
}

window_manager_answers() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }

# wireplumber decides which output is the default, and may still be starting.
default_sink_is_out() { pactl set-default-sink out && pactl get-default-sink | grep -qx out; }

export DBUS_SESSION_BUS_ADDRESS=unix:path=$XDG_RUNTIME_DIR/bus
start dbus-daemon --session --nofork --nopidfile "--address=$DBUS_SESSION_BUS_ADDRESS"
await dbus-daemon dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.GetId

if [ "$want_display" ]; then
    # The server picks a free number itself, so that two sessions cannot pick the same one.
    start Xvfb -displayfd 3 -screen 0 1440x900x24 -dpi 96 -nolisten tcp -noreset 3>"$folder/display"
    await Xvfb grep -q . "$folder/display"
    DISPLAY=:$(cat "$folder/display")
    export DISPLAY QT_QPA_PLATFORM=xcb
    await Xvfb xprop -root
    start openbox --sm-disable
    await openbox window_manager_answers
fi

if [ "$want_awake" ]; then
    # The kernel keeps to the latency written, 0 us, while the file is open: until the last process here ends.
    { exec {awake_fd}>/dev/cpu_dma_latency && printf '\0\0\0\0' >&"$awake_fd"; } 2>"$folder/log/awake" || fail awake
fi

if [ "$want_audio" ]; then
    export PULSE_SERVER=unix:$XDG_RUNTIME_DIR/pulse/native
    if [ "$audio_server" = pipewire ]; then
        if [ "$period" ]; then
            sed -i "s/2048/$period/" "$HOME/.config/pipewire/pipewire.conf.d/60-period.conf"
        fi
        start pipewire
        await pipewire test -S "$XDG_RUNTIME_DIR/pipewire-0"
        start wireplumber
        start pipewire-pulse
        await pipewire-pulse pactl info
    else
        start pulseaudio -n --daemonize=no --exit-idle-time=-1 \
            --load="module-native-protocol-unix socket=$XDG_RUNTIME_DIR/pulse/native"
        await pulseaudio pactl info
    fi
    pactl load-module module-null-sink sink_name=out rate=48000 channels=1 channel_map=mono \
        >"$folder/log/null-sink" 2>&1 || fail null-sink
    await "${audio_server/pipewire/wireplumber}" default_sink_is_out
fi

"$@" <&0 &
wait $!
