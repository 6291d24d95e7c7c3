#include "infrastructure/QueltInMemory.h"

#include <algorithm>
#include <functional>
#include <limits>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUELT_POISONS_MEMORY
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define QUELT_POISONS_MEMORY
#endif
#if defined(QUELT_POISONS_MEMORY)
// The sanitizer's interface; its header is not one of the standard library's.
extern "C" void __asan_poison_memory_region(const volatile void* memory, std::size_t bytes);
extern "C" void __asan_unpoison_memory_region(const volatile void* memory, std::size_t bytes);
#endif

namespace {

constexpr std::size_t s_alignment = 16;
constexpr std::size_t s_firstBlock = std::size_t{64} * 1024;
constexpr std::size_t s_largestStep = std::size_t{1024} * 1024;
constexpr std::size_t s_largestKept = std::size_t{4} * 1024 * 1024;
constexpr std::size_t s_mostSpare = 64;
constexpr std::size_t s_mostBucketsKept = 4096;

static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= s_alignment,
              "blocks and heap objects are aligned by operator new");

/// What the calling thread allocates from, and the arenas that it must recognise when memory comes back.
struct ThreadMemory {
    QueltInArena* current = nullptr;
    QueltInArena* arenas = nullptr;
};
thread_local constinit ThreadMemory t_memory;

constexpr std::size_t roundedUp(std::size_t bytes) noexcept {
    return (bytes + s_alignment - 1) / s_alignment * s_alignment;
}

/// Under the address sanitizer arena memory that is not handed out is out of bounds, as it would be on the
/// heap.
void forbid([[maybe_unused]] const std::byte* memory, [[maybe_unused]] std::size_t bytes) noexcept {
#if defined(QUELT_POISONS_MEMORY)
    __asan_poison_memory_region(memory, bytes);
#endif
}

void permit([[maybe_unused]] const std::byte* memory, [[maybe_unused]] std::size_t bytes) noexcept {
#if defined(QUELT_POISONS_MEMORY)
    __asan_unpoison_memory_region(memory, bytes);
#endif
}

} // namespace

void* QueltInMemory::allocate(std::size_t bytes) {
    QueltInArena* const arena = t_memory.current;
    return arena != nullptr ? arena->take(bytes) : ::operator new(bytes);
}

void QueltInMemory::release(void* memory) noexcept {
    if (memory != nullptr && arenaOf(memory) == nullptr) {
        ::operator delete(memory);
    }
}

QueltInArena* QueltInMemory::arenaOf(const void* memory) noexcept {
    for (QueltInArena* arena = t_memory.arenas; arena != nullptr; arena = arena->m_pNextOfThread) {
        if (arena->contains(memory)) {
            return arena;
        }
    }
    return nullptr;
}

QueltInArena::QueltInArena() : m_nextBlockSize(s_firstBlock), m_pNextOfThread(t_memory.arenas) {
    t_memory.arenas = this;
}

QueltInArena::~QueltInArena() {
    letGoOfShares();
    dropSpare();
    for (const Block& block : m_blocks) {
        permit(block.memory.get(), block.size);
    }
    if (t_memory.current == this) {
        t_memory.current = nullptr;
    }
    for (QueltInArena** link = &t_memory.arenas; *link != nullptr; link = &(*link)->m_pNextOfThread) {
        if (*link == this) {
            *link = m_pNextOfThread;
            return;
        }
    }
}

void QueltInArena::reset() noexcept {
    letGoOfShares();
    for (const Block& block : m_blocks) {
        permit(block.memory.get(), block.size);
    }
    m_bytesElsewhere = 0;
    keepBlocks();
    const bool isEmpty = m_blocks.empty();
    m_pFirst = m_pNext = isEmpty ? nullptr : m_blocks.front().memory.get();
    m_pEnd = isEmpty ? nullptr : m_pNext + m_blocks.front().size;
    forbid(m_pNext, static_cast<std::size_t>(m_pEnd - m_pNext));
}

/// Leaves the largest block for what comes next. Of the others those of the usual size become spare, up to a
/// limit; what was spare until now was not needed, and goes.
void QueltInArena::keepBlocks() noexcept {
    dropSpare();
    if (m_blocks.empty()) {
        return;
    }
    const auto keepable = [](const Block& block) { return block.size <= s_largestKept ? block.size : 0; };
    const auto kept =
        std::max_element(m_blocks.begin(), m_blocks.end(), [&](const Block& left, const Block& right) {
            return keepable(left) < keepable(right);
        });
    std::iter_swap(m_blocks.begin(), kept);
    const auto others = m_blocks.begin() + (keepable(m_blocks.front()) != 0 ? 1 : 0);
    for (auto block = others; block != m_blocks.end() && m_spare.size() < s_mostSpare; ++block) {
        if (block->size == s_largestStep) {
            forbid(block->memory.get(), block->size);
            m_spare.push_back(std::move(*block)); // there is room, see addBlock
        }
    }
    m_blocks.erase(others, m_blocks.end());
}

void QueltInArena::dropSpare() noexcept {
    for (const Block& block : m_spare) {
        permit(block.memory.get(), block.size);
    }
    m_spare.clear();
}

std::size_t QueltInArena::bytesReserved() const noexcept {
    std::size_t bytes = 0;
    for (const std::vector<Block>* const blocks : {&m_blocks, &m_spare}) {
        for (const Block& block : *blocks) {
            bytes += block.size;
        }
    }
    return bytes;
}

bool QueltInArena::noteShare(void* thing, void (*letGo)(void*) noexcept) {
    return m_shares.emplace(thing, letGo).second;
}

void QueltInArena::letGoOfShares() noexcept {
    for (const auto& [thing, letGo] : m_shares) {
        letGo(thing);
    }
    // Clearing visits every bucket: those of one large conversion would be paid for by all behind it.
    if (m_shares.bucket_count() > s_mostBucketsKept) {
        decltype(m_shares)().swap(m_shares); // an assignment of {} would keep them
    } else {
        m_shares.clear();
    }
}

void* QueltInArena::take(std::size_t bytes) {
    // Blocks are multiples of the alignment, so what fits in the rest of one does so rounded up, too.
    if (bytes > static_cast<std::size_t>(m_pEnd - m_pNext) || bytes == 0) {
        return takeFromNewBlock(bytes);
    }
    std::byte* const memory = m_pNext;
    m_pNext += roundedUp(bytes);
    permit(memory, bytes);
    return memory;
}

// Not inlined, so that the usual way of allocating needs no stack.
[[gnu::noinline]] std::byte* QueltInArena::takeFromNewBlock(std::size_t bytes) {
    if (bytes > std::numeric_limits<std::size_t>::max() / 2) {
        throw std::bad_alloc();
    }
    const std::size_t room = roundedUp(std::max<std::size_t>(bytes, 1));
    if (room > m_nextBlockSize / 4) { // to itself, so that what is left of the current block is not lost
        std::byte* const memory = addBlock(room);
        m_bytesElsewhere += room;
        permit(memory, bytes);
        return memory;
    }
    if (room > static_cast<std::size_t>(m_pEnd - m_pNext)) {
        std::byte* const first = addBlock(m_nextBlockSize);
        m_bytesElsewhere = bytesInUse();
        m_pFirst = m_pNext = first;
        m_pEnd = first + m_nextBlockSize;
        m_nextBlockSize = std::min(m_nextBlockSize * 2, s_largestStep);
    }
    std::byte* const memory = m_pNext;
    m_pNext += room;
    permit(memory, bytes);
    return memory;
}

std::byte* QueltInArena::addBlock(std::size_t size) {
    if (m_blocks.size() == m_blocks.capacity()) {
        m_blocks.reserve(2 * m_blocks.size() + 2);
    }
    // Blocks become spare where nothing may be thrown.
    m_spare.reserve(std::min(m_blocks.capacity(), s_mostSpare));
    Block block = takeSpare(size);
    if (block.memory == nullptr) {
        block = makeBlock(size);
    }
    std::byte* const memory = block.memory.get();
    const auto behind = std::upper_bound(
        m_blocks.begin(), m_blocks.end(), memory, [](const std::byte* address, const Block& other) {
            return std::less<const std::byte*>()(address, other.memory.get());
        });
    m_blocks.insert(behind, std::move(block));
    forbid(memory, size);
    return memory;
}

/// A new block; what is spare goes when there is no memory for it otherwise.
QueltInArena::Block QueltInArena::makeBlock(std::size_t size) {
    try {
        return {std::make_unique_for_overwrite<std::byte[]>(size), size};
    } catch (const std::bad_alloc&) {
        if (m_spare.empty()) {
            throw;
        }
    }
    dropSpare();
    return {std::make_unique_for_overwrite<std::byte[]>(size), size};
}

/// A spare block of that size; one without memory when there is none.
QueltInArena::Block QueltInArena::takeSpare(std::size_t size) noexcept {
    Block block;
    if (size == s_largestStep && !m_spare.empty()) {
        block = std::move(m_spare.back());
        m_spare.pop_back();
    }
    return block;
}

bool QueltInArena::contains(const void* memory) const noexcept {
    const auto* const wanted = static_cast<const std::byte*>(memory);
    const std::less<const std::byte*> before;
    if (m_blocks.size() == 1) { // as for nearly every conversion
        const Block& only = m_blocks.front();
        return !before(wanted, only.memory.get()) && before(wanted, only.memory.get() + only.size);
    }
    const auto behind = std::upper_bound(
        m_blocks.begin(), m_blocks.end(), wanted,
        [&](const std::byte* address, const Block& block) { return before(address, block.memory.get()); });
    if (behind == m_blocks.begin()) {
        return false;
    }
    const Block& block = *(behind - 1);
    return before(wanted, block.memory.get() + block.size);
}

QueltInArenaScope::QueltInArenaScope(QueltInArena& arena) noexcept : m_pPrevious(t_memory.current) {
    t_memory.current = &arena;
}

QueltInArenaScope::~QueltInArenaScope() {
    t_memory.current = m_pPrevious;
}

QueltInHeapScope::QueltInHeapScope() noexcept : m_pPrevious(t_memory.current) {
    t_memory.current = nullptr;
}

QueltInHeapScope::~QueltInHeapScope() {
    t_memory.current = m_pPrevious;
}
