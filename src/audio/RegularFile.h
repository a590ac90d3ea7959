// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fstream>
#include <string>

/// Opens the file @p path (UTF-8) for reading bytes. The stream is open only for a regular file or
/// a link to one: opening a FIFO would wait until somebody writes to it, and a device may never
/// end.
std::ifstream openRegularFile(const std::string &path);
