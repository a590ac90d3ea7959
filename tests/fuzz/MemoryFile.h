// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FuzzInput.h"

#include <QByteArray>

#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// A file without a place on a disk, which others open by its path.
class MemoryFile
{
public:
    MemoryFile()
        : m_descriptor(memfd_create("fuzz", MFD_CLOEXEC))
        , m_path("/proc/self/fd/" + std::to_string(m_descriptor))
    {
        require(m_descriptor >= 0);
    }
    ~MemoryFile() { close(m_descriptor); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    const std::string &path() const { return m_path; }

    /// Makes @p bytes all that the file holds.
    void hold(const QByteArray &bytes)
    {
        require(ftruncate(m_descriptor, 0) == 0);
        require(pwrite(m_descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()),
                       0) == bytes.size());
    }

    QByteArray contents() const
    {
        QByteArray result(lseek(m_descriptor, 0, SEEK_END), '\0');
        require(pread(m_descriptor, result.data(), static_cast<std::size_t>(result.size()), 0) ==
                result.size());
        return result;
    }

private:
    int m_descriptor;
    std::string m_path;
};
