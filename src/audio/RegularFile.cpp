// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/RegularFile.h"

#include <filesystem>
#include <system_error>

std::ifstream openRegularFile(const std::string &path)
{
    std::error_code error; // of what does not exist, too: then it is no regular file
    return std::filesystem::is_regular_file(path, error) ? std::ifstream(path, std::ios::binary)
                                                         : std::ifstream();
}
