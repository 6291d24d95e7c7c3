#include "infrastructure/QueltInMemory.h"

#include "core/infrastructure/OnThreads.h"
#include "core/infrastructure/RandomNumbers.h"
#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltInList.h"
#include "infrastructure/QueltInMapVal.h"
#include "infrastructure/QueltInSet.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t s_kibi = 1024;
constexpr std::size_t s_mebi = s_kibi * s_kibi;

bool isAligned(const void* memory) {
    return reinterpret_cast<std::uintptr_t>(memory) % 16 == 0;
}

bool isOnHeap(const void* memory) {
    return QueltInMemory::arenaOf(memory) == nullptr;
}

} // namespace

TEST(QueltInMemory, IsTheHeapWithoutArena) {
    void* const memory = QueltInMemory::allocate(40);
    EXPECT_TRUE(isAligned(memory));
    EXPECT_TRUE(isOnHeap(memory));
    std::memset(memory, 1, 40);
    QueltInMemory::release(memory);
    QueltInMemory::release(nullptr);
}

TEST(QueltInMemory, DiscardedObjectsOfTheHeapAreDestroyed) {
    const int before = Part::s_alive;
    const auto* const part = new Part;
    EXPECT_EQ(Part::s_alive, before + 1);
    EXPECT_TRUE(isOnHeap(part));
    delete part;
    EXPECT_EQ(Part::s_alive, before);
}

TEST(QueltInArena, HandsOutAlignedMemoryThatDoesNotOverlap) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    RandomNumbers random(1);
    struct Piece {
        unsigned char* memory;
        std::size_t size;
    };
    std::vector<Piece> pieces;
    for (int count = 0; count < 3000; ++count) {
        const std::size_t size = count % 500 == 499 ? 100 * s_kibi : random.below(700);
        auto* const memory = static_cast<unsigned char*>(QueltInMemory::allocate(size));
        ASSERT_TRUE(isAligned(memory));
        ASSERT_EQ(QueltInMemory::arenaOf(memory), &arena);
        std::memset(memory, count % 251, size);
        pieces.push_back({memory, size});
    }
    for (int count = 0; count < 3000; ++count) {
        const Piece& piece = pieces[static_cast<std::size_t>(count)];
        for (std::size_t offset = 0; offset < piece.size; ++offset) {
            ASSERT_EQ(piece.memory[offset], count % 251) << "piece " << count << " at " << offset;
        }
    }
}

TEST(QueltInArena, CountsWhatItHandsOutInPiecesOfSixteen) {
    QueltInArena arena;
    EXPECT_EQ(arena.bytesInUse(), 0U);
    EXPECT_EQ(arena.bytesReserved(), 0U);
    const QueltInArenaScope scope(arena);
    static_cast<void>(QueltInMemory::allocate(0));
    EXPECT_EQ(arena.bytesInUse(), 16U);
    static_cast<void>(QueltInMemory::allocate(17));
    EXPECT_EQ(arena.bytesInUse(), 48U);
    EXPECT_EQ(arena.bytesReserved(), 64 * s_kibi);
    static_cast<void>(QueltInMemory::allocate(s_mebi));
    EXPECT_EQ(arena.bytesInUse(), 48U + s_mebi);
    EXPECT_EQ(arena.bytesReserved(), 64 * s_kibi + s_mebi);
}

TEST(QueltInArena, ScopesNestAndTheFormerComesBack) {
    QueltInArena outer;
    QueltInArena inner;
    void* kept = nullptr;
    {
        const QueltInArenaScope outerScope(outer);
        EXPECT_EQ(QueltInMemory::arenaOf(QueltInMemory::allocate(8)), &outer);
        {
            const QueltInArenaScope innerScope(inner);
            kept = QueltInMemory::allocate(8);
            EXPECT_EQ(QueltInMemory::arenaOf(kept), &inner);
            {
                const QueltInHeapScope heapScope;
                void* const onHeap = QueltInMemory::allocate(8);
                EXPECT_TRUE(isOnHeap(onHeap));
                QueltInMemory::release(onHeap);
            }
            EXPECT_EQ(QueltInMemory::arenaOf(QueltInMemory::allocate(8)), &inner);
        }
        EXPECT_EQ(QueltInMemory::arenaOf(QueltInMemory::allocate(8)), &outer);
        QueltInMemory::release(kept); // of an arena that is no longer current, but still there
    }
    void* const onHeap = QueltInMemory::allocate(8);
    EXPECT_TRUE(isOnHeap(onHeap));
    QueltInMemory::release(onHeap);
    EXPECT_EQ(outer.bytesInUse(), 32U);
    EXPECT_EQ(inner.bytesInUse(), 32U);
}

TEST(QueltInArena, OneArenaServesScopesWithinItself) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    { const QueltInArenaScope again(arena); }
    EXPECT_EQ(QueltInMemory::arenaOf(QueltInMemory::allocate(8)), &arena);
}

TEST(QueltInArena, ObjectMadeOutsideMayBeDeletedInside) {
    const int before = Part::s_alive;
    const auto* const part = new Part;
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    delete part; // to the heap: the leak checker would tell otherwise
    EXPECT_EQ(Part::s_alive, before);
    EXPECT_EQ(arena.bytesInUse(), 0U);
}

TEST(QueltInArena, ObjectMadeInsideMayBeDeletedInsideOrAfterTheScope) {
    const int before = Part::s_alive;
    QueltInArena arena;
    std::unique_ptr<Part> later;
    {
        const QueltInArenaScope scope(arena);
        later = std::make_unique<Part>(7);
        EXPECT_EQ(QueltInMemory::arenaOf(later.get()), &arena);
        delete new Part;
    }
    EXPECT_EQ(later->m_number, 7);
    later.reset();
    EXPECT_EQ(Part::s_alive, before);
    EXPECT_GE(arena.bytesInUse(), 2 * sizeof(Part)); // deleting gives nothing back before the reset
}

TEST(QueltInArena, ResetForgetsObjectsWithoutDestroyingThem) {
    const int before = Part::s_alive;
    QueltInArena arena;
    const void* first = nullptr;
    for (int round = 0; round < 3; ++round) {
        const QueltInArenaScope scope(arena);
        const auto* const part = new Part;
        if (first == nullptr) {
            first = part;
        }
        EXPECT_EQ(part, first) << "the kept block is used again from its beginning";
        arena.reset();
        EXPECT_EQ(arena.bytesInUse(), 0U);
        EXPECT_EQ(arena.bytesReserved(), 64 * s_kibi);
    }
    EXPECT_EQ(Part::s_alive, before + 3);
    Part::s_alive = before;
}

TEST(QueltInArena, ResetKeepsTheLargestBlockButNoneAboveFourMebibytes) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    for (const std::size_t size : {2 * s_mebi, 3 * s_mebi, 5 * s_mebi, s_kibi}) {
        static_cast<void>(QueltInMemory::allocate(size));
    }
    EXPECT_EQ(arena.bytesReserved(), 10 * s_mebi + 64 * s_kibi);
    arena.reset();
    EXPECT_EQ(arena.bytesReserved(), 3 * s_mebi);
    void* const memory = QueltInMemory::allocate(3 * s_mebi);
    std::memset(memory, 1, 3 * s_mebi);
    EXPECT_EQ(arena.bytesReserved(), 3 * s_mebi);

    QueltInArena other;
    const QueltInArenaScope otherScope(other);
    static_cast<void>(QueltInMemory::allocate(5 * s_mebi));
    other.reset();
    EXPECT_EQ(other.bytesReserved(), 0U);
}

/// What an arena holds from the heap while small objects are in it, and when they are forgotten.
struct Held {
    std::size_t before;
    std::size_t behind;
};

/// Makes small objects of so many bytes together, and forgets them.
Held makeAndForget(QueltInArena& arena, std::size_t bytes) {
    constexpr std::size_t piece = 8 * s_kibi;
    const QueltInArenaScope scope(arena);
    for (std::size_t done = 0; done < bytes; done += piece) {
        std::memset(QueltInMemory::allocate(piece), 1, piece);
    }
    const std::size_t before = arena.bytesReserved();
    arena.reset();
    return {before, arena.bytesReserved()};
}

TEST(QueltInArena, ResetKeepsWhatWasNeededUntilLessIs) {
    QueltInArena arena;
    const Held first = makeAndForget(arena, 10 * s_mebi);
    EXPECT_GE(first.behind, 9 * s_mebi);
    EXPECT_LE(first.behind, 11 * s_mebi);
    const Held second = makeAndForget(arena, 10 * s_mebi);
    EXPECT_LE(second.before, first.behind + s_mebi) << "what is kept is used again";
    EXPECT_EQ(makeAndForget(arena, s_kibi).behind, s_mebi) << "one conversion did without it";
    EXPECT_EQ(makeAndForget(arena, s_kibi).behind, s_mebi);
}

TEST(QueltInArena, ResetDoesNotKeepTooMuch) {
    QueltInArena arena;
    EXPECT_LE(makeAndForget(arena, 150 * s_mebi).behind, 65 * s_mebi);
    arena.reset();
    EXPECT_EQ(arena.bytesReserved(), s_mebi);
}

TEST(QueltInArena, BigObjectLeavesTheCurrentBlockInUse) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    const auto* const before = static_cast<const std::byte*>(QueltInMemory::allocate(16));
    static_cast<void>(QueltInMemory::allocate(10 * s_mebi));
    const auto* const after = static_cast<const std::byte*>(QueltInMemory::allocate(16));
    EXPECT_EQ(after, before + 16);

    const auto* const fits = static_cast<const std::byte*>(QueltInMemory::allocate(40 * s_kibi));
    static_cast<void>(QueltInMemory::allocate(40 * s_kibi)); // does not fit any more and is rather big
    EXPECT_EQ(QueltInMemory::allocate(16), fits + 40 * s_kibi);
}

TEST(QueltInArena, KnowsItsOwnMemoryAmongManyBlocks) {
    QueltInArena arena;
    QueltInArena other;
    std::vector<void*> own;
    std::vector<void*> foreign;
    for (int count = 0; count < 2000; ++count) {
        {
            const QueltInArenaScope scope(arena);
            own.push_back(QueltInMemory::allocate(8 * s_kibi));
        }
        const QueltInArenaScope scope(other);
        foreign.push_back(QueltInMemory::allocate(8 * s_kibi));
    }
    for (std::size_t count = 0; count < own.size(); ++count) {
        ASSERT_EQ(QueltInMemory::arenaOf(own[count]), &arena);
        ASSERT_EQ(QueltInMemory::arenaOf(static_cast<std::byte*>(own[count]) + 8 * s_kibi - 1), &arena);
        ASSERT_EQ(QueltInMemory::arenaOf(foreign[count]), &other);
    }
    int onStack = 0;
    EXPECT_TRUE(isOnHeap(&onStack));
    other.reset();
    EXPECT_EQ(QueltInMemory::arenaOf(own.front()), &arena);
}

TEST(QueltInArena, GoneArenasAreForgotten) {
    auto first = std::make_unique<QueltInArena>();
    auto second = std::make_unique<QueltInArena>();
    auto third = std::make_unique<QueltInArena>();
    second.reset();
    first.reset();
    const QueltInArenaScope scope(*third);
    EXPECT_EQ(QueltInMemory::arenaOf(QueltInMemory::allocate(1)), third.get());
    const QueltInHeapScope heap;
    third.reset();
    void* const memory = QueltInMemory::allocate(1);
    EXPECT_TRUE(isOnHeap(memory));
    QueltInMemory::release(memory);
}

TEST(QueltInArena, RefusesImpossibleSizes) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    const volatile std::size_t impossible = SIZE_MAX - 3;
    EXPECT_THROW(static_cast<void>(QueltInMemory::allocate(impossible)), std::bad_alloc);
    EXPECT_EQ(QueltInObject::operator new(impossible, std::nothrow), nullptr);
    EXPECT_EQ(arena.bytesInUse(), 0U);
    EXPECT_THROW(static_cast<void>(QueltInAllocator<int>().allocate(impossible)), std::bad_array_new_length);
}

TEST(QueltInArena, IsCurrentOnItsOwnThreadOnly) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    std::thread([] {
        void* const memory = QueltInMemory::allocate(8);
        EXPECT_TRUE(isOnHeap(memory));
        QueltInMemory::release(memory);
        QueltInArena own;
        const QueltInArenaScope ownScope(own);
        EXPECT_EQ(QueltInMemory::arenaOf(QueltInMemory::allocate(8)), &own);
    }).join();
    EXPECT_EQ(arena.bytesInUse(), 0U);
}

TEST(QueltInArena, ThreadsWorkEachInItsOwn) {
    onThreads(4, [](unsigned int number) {
        QueltInArena arena;
        for (int round = 0; round < 50; ++round) {
            const QueltInArenaScope scope(arena);
            auto* const text =
                new QueltInString("some text that is longer than any string keeps inside itself");
            for (int count = 0; count < 20; ++count) {
                text->append(std::to_string(number));
            }
            EXPECT_EQ(text->view().size(), 60U + 20U);
            arena.reset();
        }
    });
}

TEST(QueltInArena, ContainersAndTextsLeaveNothingOnTheHeap) {
    // Nothing here is deleted: the leak checker finds whatever came from the heap.
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    auto* const set = new QueltInSet(QueltInString::sType());
    auto* const map = new QueltInMapVal(QueltInIntHolder::sType(), QueltInString::sType());
    for (unsigned int count = 0; count < 1000; ++count) {
        auto* const text = new QueltInString("a text that is too long to be kept inside, number ");
        text->append(std::to_string(count));
        EXPECT_NE(set->Put(*text), 0);
        EXPECT_EQ(map->Put(QueltInIntHolder(count), *text), 0);
    }
    EXPECT_EQ(set->GetLength(), 1000);
    EXPECT_EQ(QueltInMemory::arenaOf(map->clone(nullptr)), &arena);
    arena.reset();
    EXPECT_EQ(arena.bytesInUse(), 0U);
}

TEST(QueltInArena, LetsGoOfSharesOnceAtResetAndAtItsEnd) {
    int gone = 0;
    const auto letGo = [](void* counter) noexcept { ++*static_cast<int*>(counter); };
    std::optional<QueltInArena> arena(std::in_place);
    EXPECT_TRUE(arena->noteShare(&gone, letGo));
    EXPECT_FALSE(arena->noteShare(&gone, letGo));
    EXPECT_EQ(gone, 0);
    arena->reset();
    EXPECT_EQ(gone, 1);
    arena->reset();
    EXPECT_EQ(gone, 1);
    EXPECT_TRUE(arena->noteShare(&gone, letGo));
    arena.reset();
    EXPECT_EQ(gone, 2);
}

TEST(QueltInArena, SmallObjectsOfAWholeTreeFit) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    constexpr int objects = 300000;
    const int before = Part::s_alive;
    for (int count = 0; count < objects; ++count) {
        const auto* const part = new Part(count);
        if (count % 2 == 0) {
            delete part;
        }
    }
    EXPECT_EQ(Part::s_alive, before + objects / 2);
    const std::size_t used = arena.bytesInUse();
    EXPECT_EQ(used, objects * ((sizeof(Part) + 15) / 16 * 16));
    EXPECT_LE(arena.bytesReserved(), used + s_mebi) << "blocks must not leave much unused";
    Part::s_alive = before;
}

#if defined(__SANITIZE_ADDRESS__)
extern "C" int __asan_address_is_poisoned(const volatile void* address);

TEST(QueltInArena, ForbidsWhatIsNotHandedOutUnderTheAddressSanitizer) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    auto* const memory = static_cast<std::byte*>(QueltInMemory::allocate(20));
    EXPECT_EQ(__asan_address_is_poisoned(memory), 0);
    EXPECT_EQ(__asan_address_is_poisoned(memory + 19), 0);
    EXPECT_NE(__asan_address_is_poisoned(memory + 20), 0);
    EXPECT_NE(__asan_address_is_poisoned(memory + 32), 0);
    arena.reset();
    EXPECT_NE(__asan_address_is_poisoned(memory), 0);
    EXPECT_NE(__asan_address_is_poisoned(memory + 19), 0);

    std::vector<const void*> pieces; // in many blocks, which are kept
    for (int count = 0; count < 1000; ++count) {
        pieces.push_back(QueltInMemory::allocate(8 * s_kibi));
        EXPECT_EQ(__asan_address_is_poisoned(pieces.back()), 0);
    }
    arena.reset();
    EXPECT_GT(arena.bytesReserved(), 5 * s_mebi);
    for (const void* const piece : pieces) {
        EXPECT_NE(__asan_address_is_poisoned(piece), 0);
    }
}
#endif

TEST(QueltInVector, TakesItsMemoryFromWhatIsCurrent) {
    QueltInArena arena;
    const QueltInArenaScope scope(arena);
    const QueltInVector<int> inArena(100, 1);
    EXPECT_EQ(QueltInMemory::arenaOf(inArena.data()), &arena);
    const QueltInHeapScope heap;
    const QueltInVector<int> onHeap(100, 1);
    EXPECT_TRUE(isOnHeap(onHeap.data()));
    EXPECT_EQ(inArena, onHeap);
}
