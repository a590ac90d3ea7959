#pragma once

#include <QString>

/// The user's desktop folder, where sound folders are looked for and results are proposed.
QString desktopFolder();
