#pragma once

#include <QVersionNumber>

/// The silence in seconds that is played behind a token, so that the token is heard whole and the
/// output goes idle at its end: how early QAudioSink of the Qt version @p qt goes idle, and what of
/// the unplayed rest its stop() throws away, differs by version.
///
/// The silence belongs to no figure: not to the token's duration, nor to its plots.
double trailingSilence(const QVersionNumber &qt);
