#pragma once

#include "infrastructure/QueltInMemory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <span>
#include <type_traits>

/// A sequence of plain values that keeps its first `Inline` ones inside itself: short lists of intervals,
/// values and children need no memory of their own. Longer ones take theirs from the allocator that is
/// current on the thread. Positions are unsigned and 0-based; unless stated otherwise a position must be
/// smaller than size().
template <class T, std::uint32_t Inline>
class QueltInSmallVector {
    static_assert(std::is_trivially_copyable_v<T>, "values are moved by copying their bytes");
    static_assert(Inline > 0);

public:
    /// Without values.
    QueltInSmallVector() noexcept = default;
    /// A copy of the values; room that `other` has ahead is not copied.
    QueltInSmallVector(const QueltInSmallVector& other) {
        if (other.m_pData != other.m_inline) {
            assign(other.values());
            return;
        }
        // As nearly always: a few words, however many of them count.
        std::memcpy(m_inline, other.m_inline, sizeof m_inline);
        m_size = other.m_size;
    }
    /// Replaces the values by a copy of those of `other`.
    QueltInSmallVector& operator=(const QueltInSmallVector& other) {
        if (this != &other) {
            assign(other.values());
        }
        return *this;
    }
    ~QueltInSmallVector() { releaseOwnMemory(); }

    /// The number of values.
    [[nodiscard]] std::uint32_t size() const noexcept { return m_size; }
    /// True when there is no value.
    [[nodiscard]] bool empty() const noexcept { return m_size == 0; }
    /// The value at `position`; valid until the next change.
    [[nodiscard]] T& operator[](std::uint32_t position) noexcept { return m_pData[position]; }
    /// The value at `position`; valid until the next change.
    [[nodiscard]] const T& operator[](std::uint32_t position) const noexcept { return m_pData[position]; }
    /// The first value; valid until the next change, as are the ends below.
    [[nodiscard]] T* begin() noexcept { return m_pData; }
    /// Behind the last value.
    [[nodiscard]] T* end() noexcept { return m_pData + m_size; }
    /// The first value.
    [[nodiscard]] const T* begin() const noexcept { return m_pData; }
    /// Behind the last value.
    [[nodiscard]] const T* end() const noexcept { return m_pData + m_size; }
    /// All values in order; valid until the next change.
    [[nodiscard]] std::span<const T> values() const noexcept { return {m_pData, m_size}; }

    /// Appends a value.
    void push_back(const T& value) {
        const T copy = value; // may stand in the memory that grows away
        reserve(m_size + 1U);
        m_pData[m_size++] = copy;
    }
    /// Puts a value before `position` (at most size()); those from there on move one place back.
    void insert(std::uint32_t position, const T& value) {
        const T copy = value;
        reserve(m_size + 1U);
        std::copy_backward(m_pData + position, m_pData + m_size, m_pData + m_size + 1);
        m_pData[position] = copy;
        ++m_size;
    }
    /// Takes the value at `position` out; those behind it move one place forward.
    void erase(std::uint32_t position) noexcept {
        std::copy(m_pData + position + 1, m_pData + m_size, m_pData + position);
        --m_size;
    }
    /// Keeps the first `size` values (at most size()).
    void truncate(std::uint32_t size) noexcept { m_size = size; }
    /// Takes all values out; the room stays.
    void clear() noexcept { m_size = 0; }
    /// Replaces everything by a copy of `values`, which must not stand in this vector.
    void assign(std::span<const T> values) {
        m_size = 0;
        reserve(values.size());
        std::copy(values.begin(), values.end(), m_pData);
        m_size = static_cast<std::uint32_t>(values.size());
    }
    /// Makes room for `wanted` values in all. Throws std::bad_array_new_length past 2^31 values.
    void reserve(std::size_t wanted) {
        if (wanted > m_capacity) {
            grow(wanted);
        }
    }

private:
    void grow(std::size_t wanted) {
        if (wanted > std::numeric_limits<std::int32_t>::max()) {
            throw std::bad_array_new_length();
        }
        const std::size_t capacity = std::max<std::size_t>(wanted, std::size_t{m_capacity} * 2);
        T* const memory = static_cast<T*>(QueltInMemory::allocate(capacity * sizeof(T)));
        std::copy(m_pData, m_pData + m_size, memory);
        releaseOwnMemory();
        m_pData = memory;
        m_capacity = static_cast<std::uint32_t>(capacity);
    }
    void releaseOwnMemory() noexcept {
        if (m_pData != m_inline) {
            QueltInMemory::release(m_pData);
        }
    }

    T* m_pData = m_inline;
    std::uint32_t m_size = 0;
    std::uint32_t m_capacity = Inline;
    T m_inline[Inline]{};
};
