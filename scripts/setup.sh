#!/usr/bin/env bash
# Installs what building, testing and running Ostrine needs on Debian 12 (or a later Debian or Ubuntu
# with the same package names). Does nothing, and needs no rights, when everything is there already.
#
#   setup.sh [--bench]    with --bench, what the benchmarks need as well
set -euo pipefail

packages=(
    # Building
    build-essential cmake ninja-build clang-format-14
    qt6-base-dev qt6-charts-dev qt6-multimedia-dev
    # Another compiler, and one for another processor, for the transform's test
    clang g++-aarch64-linux-gnu qemu-user
    # Qt Charts' CMake package looks for these two without depending on them
    libqt6opengl6-dev libgl1-mesa-dev
    # Text in the windows, with and without a screen
    fonts-dejavu-core
    # A private display to run the windows on, hands to press their buttons, eyes to find them
    xvfb xauth openbox xdotool x11-utils imagemagick
    at-spi2-core python3 python3-pyatspi gir1.2-atspi-2.0
    # A private sound server which records what would be heard
    dbus-daemon pipewire pipewire-bin pipewire-pulse wireplumber pulseaudio-utils procps
)

if [ "${1:-}" = --bench ]; then
    packages+=(
        libbenchmark-dev
        # The transforms of others to compare with
        libfftw3-dev libgsl-dev libeigen3-dev
        # The reader of sound files to compare with
        libsndfile1-dev
        # The other sound server, and a recorder that tells when each sample arrived
        pulseaudio libpulse-dev pkg-config
    )
fi

missing=()
for package in "${packages[@]}"; do
    # The status must be read: a removed package which left its configuration behind is still listed.
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all ${#packages[@]} packages are installed"
    exit 0
fi
echo "setup: missing: ${missing[*]}"

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
        as_root=(sudo -n)
    elif command -v sudo >/dev/null && [ -t 0 ]; then
        as_root=(sudo)
    else
        echo "setup: not root and no way to become root without asking. Run this once, then start again:" >&2
        echo "    apt-get update && apt-get install -y --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
fi

# sudo drops the environment, so the variable is set behind it.
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${missing[@]}"
echo "setup: installed: ${missing[*]}"
