// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Asks PipeWire to play the program's own streams with a period of 2048 samples (43 ms), whatever
/// other programs ask for. Only connections to the sound server that the process makes afterwards
/// are affected, so this must be called before the first one.
///
/// PipeWire uses the shortest period that any program asks for; with a browser or a recorder that
/// is 1024 or 256 samples. Through Qt these two look the same, so the computed end of a token was
/// wrong by up to 10 ms, and on a busy machine they caused gaps in the sound. A period of 2048
/// samples can be recognised, and the server keeps up with it. The request holds only while a
/// stream of the program plays.
///
/// The request is a property of the program's streams, node.force-quantum. The libraries by which
/// Qt reaches the server read such properties from the environment: libpulse from PULSE_PROP
/// (Debian's Qt 6.4 and 6.8), PipeWire's own from PIPEWIRE_PROPS (Qt 6.11). What the user has set
/// there is kept. PulseAudio ignores the request.
void requestServerPeriod();
