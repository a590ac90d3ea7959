#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# The inner part of ../private-session.sh: sets up the environment in the empty folder that is its first argument,
# and runs the command in it. The outer script stops what is started here.
set -Eeuo pipefail

fail() { echo "private-session: $1" >&2; exit 125; }
trap 'fail "could not be set up"' ERR

# When the outer script ends, everything here ends.
trap 'trap "" TERM; kill -TERM 0; exit 143' TERM

folder=$1 audio='' awake='' display='' period=2048 server=pipewire
shift
while [[ ${1:-} == -* ]]; do
    case $1 in
        --audio | --awake | --display) declare "${1#--}=1" ;;
        --period) period=${2:?--period needs a number of samples}; shift ;;
        --pulseaudio) server=pulseaudio ;;
        *) fail "unknown option $1" ;;
    esac
    shift
done
[ $# -gt 0 ] || fail "no command to run"

# Nothing of the caller's desktop may be used: neither its screen and sound, nor settings that change how the program
# looks or which file dialog it opens.
unset DISPLAY WAYLAND_DISPLAY XAUTHORITY DBUS_SESSION_BUS_ADDRESS AT_SPI_BUS_ADDRESS DESKTOP_SESSION
unset "${!XDG_@}" "${!PULSE_@}" "${!PIPEWIRE_@}" "${!QT_@}" "${!QSG_@}"
export HOME=$folder/home XDG_RUNTIME_DIR=$folder/run LC_ALL=C.UTF-8
export DBUS_SESSION_BUS_ADDRESS=unix:path=$XDG_RUNTIME_DIR/bus
mkdir -p "$HOME/Desktop"
mkdir -m 700 "$XDG_RUNTIME_DIR"
cp -r "$(dirname "${BASH_SOURCE[0]}")/config" "$HOME/.config"

# start CONDITION COMMAND...: runs COMMAND in the background and waits until CONDITION holds. Fails after 20 s, or
# when COMMAND has failed.
start() {
    local condition=$1 log=$folder/$2.log deadline=$((SECONDS + 20))
    shift
    "$@" >"$log" 2>&1 </dev/null &
    until eval "$condition" >/dev/null 2>&1; do
        if [ "$SECONDS" -ge "$deadline" ] || ! { kill -0 $! || wait $!; } 2>/dev/null; then
            sed "s/^/private-session: $1: /" "$log" >&2
            fail "$1 did not come up"
        fi
        sleep 0.05
    done
}

start 'dbus-send --session --dest=org.freedesktop.DBus / org.freedesktop.DBus.GetId' \
    dbus-daemon --session --nofork --nopidfile "--address=$DBUS_SESSION_BUS_ADDRESS"

if [ "$display" ]; then
    # The server picks a free number itself, so that two sessions cannot pick the same one.
    start 'test -s "$folder/display"' \
        Xvfb -displayfd 3 -screen 0 1440x900x24 -dpi 96 -nolisten tcp -noreset 3>"$folder/display"
    export DISPLAY=:$(<"$folder/display") QT_QPA_PLATFORM=xcb
    start 'xprop -root _NET_SUPPORTING_WM_CHECK | grep "window id"' openbox --sm-disable
fi

if [ "$awake" ]; then
    # The kernel keeps to the latency written, 0 us, while the file is open: until the last process here ends.
    exec {awake_fd}>/dev/cpu_dma_latency
    printf '\0\0\0\0' >&"$awake_fd"
fi

if [ "$audio" ]; then
    export PULSE_SERVER=unix:$XDG_RUNTIME_DIR/pulse/native
    if [ "$server" = pulseaudio ]; then
        start 'pactl info' pulseaudio -n --daemonize=no --exit-idle-time=-1 --load=module-native-protocol-unix
    else
        sed -i "s/2048/$period/" "$HOME/.config/pipewire/pipewire.conf.d/60-period.conf"
        start 'test -S "$XDG_RUNTIME_DIR/pipewire-0"' pipewire
        start true wireplumber
        start 'pactl info' pipewire-pulse
    fi
    # wireplumber decides which output is the default, and may still be starting.
    start 'pactl set-default-sink out && pactl get-default-sink | grep -x out' \
        pactl load-module module-null-sink sink_name=out rate=48000 channels=1 channel_map=mono
fi

trap - ERR
"$@" <&0 &
wait $!
