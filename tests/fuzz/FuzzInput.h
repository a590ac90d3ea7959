// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <span>
#include <utility>

/// The entry point of each fuzz target: runs it once on @p size bytes at @p data. What is wrong
/// ends the program.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// Ends the program, which the fuzzer and the replay take for a finding, unless @p holds. Clang 14
/// has no std::source_location.
inline void require(bool holds, const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    if (holds)
        return;
    std::clog << file << ':' << line << ": a requirement does not hold" << std::endl;
    std::abort();
}

/// The bytes of one input, taken from the front as values. Where they have run out a number is 0
/// and a text is empty, so that every input means something.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t *data, std::size_t size)
        : m_rest(data, size)
    {
    }

    bool atEnd() const { return m_rest.empty(); }

    /// The next @p size bytes, or as many as there are.
    QByteArray bytes(std::size_t size)
    {
        const auto taken = m_rest.first(std::min(size, m_rest.size()));
        m_rest = m_rest.subspan(taken.size());
        return {reinterpret_cast<const char *>(taken.data()), std::ssize(taken)};
    }

    /// All the bytes that are left.
    QByteArray rest() { return bytes(m_rest.size()); }

    /// The next integer, lowest byte first.
    template<std::integral Integer>
    Integer number()
    {
        const QByteArray taken = bytes(sizeof(Integer));
        Integer value = 0;
        if (!taken.isEmpty())
            std::memcpy(&value, taken.constData(), static_cast<std::size_t>(taken.size()));
        return value;
    }

    std::uint8_t byte() { return number<std::uint8_t>(); }

    bool flag() { return (byte() & 1U) != 0; }

    /// The next double: any there is, infinities and NaNs included, or a plain one of a few digits.
    double real()
    {
        return flag() ? number<std::int32_t>() / 1000.0
                      : std::bit_cast<double>(number<std::uint64_t>());
    }

    /// The next text of up to 255 characters: UTF-8, or any UTF-16, lone surrogates included.
    QString text()
    {
        const bool utf8 = flag();
        const std::size_t length = byte();
        if (utf8)
            return QString::fromUtf8(bytes(length));
        QString result;
        while (std::cmp_less(result.size(), length) && !atEnd())
            result.append(QChar(number<char16_t>()));
        return result;
    }

    /// The next text with a question mark in place of each lone surrogate: no name of a file and no
    /// field of a window has one.
    QString validText() { return QString::fromUtf8(text().toUtf8()); }

private:
    std::span<const std::uint8_t> m_rest;
};
