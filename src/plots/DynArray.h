// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "plots/Assertion.h"

#include <cstdint>

/// An array on the heap that owns its elements. It cannot be copied, a new size means new elements,
/// and every access is checked. New elements are default-initialised: numbers are indeterminate.
template<class T>
class DynArray
{
public:
    /// No elements.
    DynArray() = default;

    /// @p size elements. Asserts that @p size is not negative.
    explicit DynArray(std::int64_t size) { resize(size); }

    ~DynArray() { delete[] _data_ptr; }
    DynArray(const DynArray &) = delete;
    DynArray &operator=(const DynArray &) = delete;

    /// The number of elements.
    std::int64_t size() const { return _len; }

    /// Asserts that @p size is not negative, as the size of an array must be.
    static void check_size(std::int64_t size) { assertThat(size >= 0, "size >= 0"); }

    /// Replaces the elements by @p size new ones. Asserts that @p size is not negative.
    void resize(std::int64_t size)
    {
        check_size(size);
        T *const elements = size > 0 ? new T[static_cast<std::size_t>(size)] : nullptr;
        delete[] _data_ptr;
        _data_ptr = elements;
        _len = size;
    }

    /// The element at @p pos. Asserts that @p pos is from 0 to size() - 1.
    const T &operator[](std::int64_t pos) const
    {
        check_position(pos);
        return _data_ptr[pos];
    }
    T &operator[](std::int64_t pos)
    {
        check_position(pos);
        return _data_ptr[pos];
    }

private:
    void check_position(std::int64_t pos) const
    {
        assertThat(pos >= 0, "pos >= 0");
        assertThat(pos < _len, "pos < _len");
    }

    T *_data_ptr = nullptr;
    std::int64_t _len = 0;
};
