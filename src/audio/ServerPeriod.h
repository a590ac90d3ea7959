// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Asks PipeWire to play the program's own streams with a period of 2048 samples (43 ms), whatever
/// other programs ask for. Takes effect for the process's connections to the sound server that are
/// made afterwards, so it must come before the first.
///
/// PipeWire plays with the shortest period that any program asks for: a browser or a recorder
/// brings 1024 or 256 samples about. These cannot be told apart through Qt, so that the end of a
/// token was off by up to 10 ms, and they tore gaps into sounds on a busy machine. A period of 2048
/// can be seen and is kept up. It holds while a token plays.
///
/// The request is a property of the program's streams, node.force-quantum. The libraries by which
/// Qt reaches the server read such properties from the environment: libpulse from PULSE_PROP
/// (Debian's Qt 6.4 and 6.8), PipeWire's own from PIPEWIRE_PROPS (Qt 6.11). What the user has set
/// there stays. PulseAudio ignores it.
void requestServerPeriod();
