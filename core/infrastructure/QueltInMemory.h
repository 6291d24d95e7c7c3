#pragma once

#include "infrastructure/QueltCoreExport.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <unordered_map>
#include <vector>

class QueltInArena;

/// The memory that objects of the core come from: the heap, or the arena that is current on the calling
/// thread.
///
/// What decides is the moment, not the owner: memory that an object made outside an arena comes to need while
/// the arena is current goes with the arena. Whoever changes such an object inside does it in a
/// QueltInHeapScope.
class QUELT_CORE_API QueltInMemory {
public:
    /// Memory of at least `bytes` bytes, aligned for any object of the core (16 bytes), from the allocator
    /// that is current on this thread. Never null: throws std::bad_alloc when there is none left.
    [[nodiscard]] static void* allocate(std::size_t bytes);

    /// Gives memory of `allocate` back. Memory of an arena of this thread is left to the arena; any other
    /// goes to the heap, whatever is current now. Null is accepted.
    static void release(void* memory) noexcept;

    /// The arena of this thread that `memory` lies in, null when there is none.
    [[nodiscard]] static QueltInArena* arenaOf(const void* memory) noexcept;
};

/// A region that many objects are made in and that returns them all in one step, without running their
/// destructors. An arena belongs to the thread that made it: objects are made, used, deleted and forgotten
/// there, and the arena itself goes there, after its scopes are closed. It is used by opening a
/// QueltInArenaScope.
class QUELT_CORE_API QueltInArena {
public:
    /// An empty arena; nothing is reserved before the first object.
    QueltInArena();
    /// Returns everything that was made inside.
    ~QueltInArena();
    QueltInArena(const QueltInArena&) = delete;
    QueltInArena& operator=(const QueltInArena&) = delete;

    /// Forgets everything that was made inside and keeps memory for what comes next, so that an arena that
    /// is used for one conversion after the other asks the heap only for the unusual ones: one block, and up
    /// to 64 MiB of those that small objects have been in since the reset before. A second reset leaves one.
    void reset() noexcept;

    /// Bytes handed out since the last reset, each piece rounded up to 16, for figures and tests.
    [[nodiscard]] std::size_t bytesInUse() const noexcept {
        return m_bytesElsewhere + static_cast<std::size_t>(m_pNext - m_pFirst);
    }
    /// Bytes that the arena holds from the heap, used or not.
    [[nodiscard]] std::size_t bytesReserved() const noexcept;

    /// A share in something that lives outside, given up without a destructor of its holder: calls
    /// `letGo(thing)` at the next reset, or when the arena goes. True when `thing` was not noted since the
    /// last reset; a thing that was is not noted again.
    bool noteShare(void* thing, void (*letGo)(void*) noexcept);

private:
    friend class QueltInMemory;
    struct Block {
        std::unique_ptr<std::byte[]> memory;
        std::size_t size = 0;
    };
    [[nodiscard]] void* take(std::size_t bytes);
    [[nodiscard]] std::byte* takeFromNewBlock(std::size_t bytes);
    std::byte* addBlock(std::size_t size);
    [[nodiscard]] Block makeBlock(std::size_t size);
    [[nodiscard]] Block takeSpare(std::size_t size) noexcept;
    void dropSpare() noexcept;
    void keepBlocks() noexcept;
    void letGoOfShares() noexcept;
    [[nodiscard]] bool contains(const void* memory) const noexcept;

    std::vector<Block> m_blocks;   // by address
    std::vector<Block> m_spare;    // in use before the last reset, and not since
    std::byte* m_pFirst = nullptr; // the current block, which small objects come from
    std::byte* m_pNext = nullptr;
    std::byte* m_pEnd = nullptr;
    std::size_t m_nextBlockSize = 0;
    std::size_t m_bytesElsewhere = 0; // handed out from other blocks
    std::unordered_map<void*, void (*)(void*) noexcept> m_shares;
    QueltInArena* m_pNextOfThread = nullptr;
};

/// Makes an arena current on this thread for as long as the scope lives; scopes nest, the one that was
/// current before comes back at the end.
class QUELT_CORE_API QueltInArenaScope {
public:
    /// Makes `arena` (of this thread) current.
    explicit QueltInArenaScope(QueltInArena& arena) noexcept;
    /// Makes current again what was so before.
    ~QueltInArenaScope();
    QueltInArenaScope(const QueltInArenaScope&) = delete;
    QueltInArenaScope& operator=(const QueltInArenaScope&) = delete;

private:
    QueltInArena* m_pPrevious;
};

/// Makes the plain heap current on this thread for as long as the scope lives: for what outlives a conversion
/// although it is made during one.
class QUELT_CORE_API QueltInHeapScope {
public:
    /// Makes the heap current.
    QueltInHeapScope() noexcept;
    /// Makes current again what was so before.
    ~QueltInHeapScope();
    QueltInHeapScope(const QueltInHeapScope&) = delete;
    QueltInHeapScope& operator=(const QueltInHeapScope&) = delete;

private:
    QueltInArena* m_pPrevious;
};

/// Standard allocator over QueltInMemory, so that what an object holds lives and goes with the object.
template <class T>
class QueltInAllocator {
public:
    /// What the memory is for.
    using value_type = T;

    /// There is nothing to set up: what is current on the thread decides.
    QueltInAllocator() noexcept = default;
    /// As good as the allocator for objects of another class.
    template <class U>
    QueltInAllocator(const QueltInAllocator<U>& /*other*/) noexcept {} // NOLINT(google-explicit-constructor)

    /// Room for `count` objects. Throws std::bad_alloc when there is none left.
    [[nodiscard]] T* allocate(std::size_t count) {
        if (count > PTRDIFF_MAX / sizeof(T)) {
            throw std::bad_array_new_length();
        }
        return static_cast<T*>(QueltInMemory::allocate(count * sizeof(T)));
    }
    /// Gives the room back.
    void deallocate(T* memory, std::size_t /*count*/) noexcept { QueltInMemory::release(memory); }

    /// True: what one allocates any other may give back.
    template <class U>
    friend bool operator==(const QueltInAllocator& /*left*/, const QueltInAllocator<U>& /*right*/) noexcept {
        return true;
    }
};

/// A std::vector whose memory comes from the allocator that is current on the thread.
template <class T>
using QueltInVector = std::vector<T, QueltInAllocator<T>>;
