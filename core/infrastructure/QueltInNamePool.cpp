#include "infrastructure/QueltInNamePool.h"

#include "infrastructure/QueltInKeyedHash.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <unordered_map>

/// One name of the pool with the number of those that share it.
struct quelt::NameEntry {
    explicit NameEntry(std::string_view name) : text(name) {}

    QueltInString text;
    std::atomic<std::uint64_t> shares{0};
};

namespace {

using quelt::NameEntry;

/// All names that somebody bears. A share is added under the lock or from another share, the last one goes
/// under the exclusive lock: an entry that is found here is therefore never on its way out.
class NamePool {
public:
    /// The pool of the process. It is never destroyed, since names with static storage may go after
    /// everything else.
    static NamePool& instance() {
        alignas(NamePool) static std::byte storage[sizeof(NamePool)];
        static NamePool* const pool = new (storage) NamePool;
        return *pool;
    }

    /// Gives back the memory of the pool itself when nobody bears a name. Does not wait: a process that ends
    /// may have ended the thread that holds the lock.
    void trim() noexcept {
        const std::unique_lock lock(m_mutex, std::try_to_lock);
        if (lock.owns_lock() && m_entries.empty()) {
            decltype(m_entries)().swap(m_entries); // which clearing would not do
        }
    }

    /// The entry of `text`, with one share more.
    NameEntry* shareIn(std::string_view text) {
        {
            const std::shared_lock lock(m_mutex);
            if (const auto found = m_entries.find(text); found != m_entries.end()) {
                addShare(found->second);
                return found->second;
            }
        }
        const QueltInHeapScope heap; // names outlive the arena that is current
        auto made = std::make_unique<NameEntry>(text);
        const std::unique_lock lock(m_mutex);
        const auto [place, isNew] = m_entries.try_emplace(made->text.view(), made.get());
        if (isNew) {
            static_cast<void>(made.release());
        }
        addShare(place->second);
        return place->second;
    }

    static void addShare(NameEntry* entry) noexcept { entry->shares.fetch_add(1, std::memory_order_relaxed); }

    void removeShare(NameEntry* entry) noexcept {
        std::uint64_t shares = entry->shares.load(std::memory_order_relaxed);
        while (shares > 1) {
            if (entry->shares.compare_exchange_weak(shares, shares - 1, std::memory_order_release,
                                                    std::memory_order_relaxed)) {
                return;
            }
        }
        const std::unique_lock lock(m_mutex);
        if (entry->shares.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            m_entries.erase(entry->text.view());
            delete entry;
        }
    }

    std::size_t size() {
        const std::shared_lock lock(m_mutex);
        return m_entries.size();
    }

private:
    std::shared_mutex m_mutex;
    std::unordered_map<std::string_view, NameEntry*, quelt::KeyedTextHash> m_entries; // of the entries' texts
};

/// Lets nothing of an empty pool stay behind when the library is unloaded.
struct PoolTrimmer {
    ~PoolTrimmer() { NamePool::instance().trim(); }
};
const PoolTrimmer s_poolTrimmer;

void letGo(void* entry) noexcept {
    NamePool::instance().removeShare(static_cast<NameEntry*>(entry));
}

} // namespace

QueltInName::QueltInName(std::string_view text) {
    if (text.empty()) {
        return;
    }
    NameEntry* const entry = NamePool::instance().shareIn(text);
    try {
        share(entry);
    } catch (...) {
        letGo(entry);
        throw;
    }
    letGo(entry);
}

QueltInName& QueltInName::operator=(const QueltInName& other) {
    if (this != &other && m_pEntry != other.m_pEntry) {
        NameEntry* const former = m_pEntry;
        const bool formerCounted = m_counted;
        share(other.m_pEntry);
        if (formerCounted) {
            letGo(former);
        }
    }
    return *this;
}

const QueltInString& QueltInName::text() const noexcept {
    // Never destroyed, as the pool; a text without characters holds no memory.
    alignas(QueltInString) static std::byte storage[sizeof(QueltInString)];
    static const QueltInString* const empty = new (storage) QueltInString;
    return m_pEntry != nullptr ? m_pEntry->text : *empty;
}

std::size_t QueltInName::countOfNames() {
    return NamePool::instance().size();
}

void QueltInName::share(quelt::NameEntry* entry) {
    QueltInArena* const arena = entry != nullptr ? QueltInMemory::arenaOf(this) : nullptr;
    // A name that lies in an arena may go without its destructor: the arena holds one share for all of them.
    if (arena != nullptr ? arena->noteShare(entry, letGo) : entry != nullptr) {
        NamePool::addShare(entry);
    }
    m_counted = entry != nullptr && arena == nullptr;
    m_pEntry = entry;
}

void QueltInName::giveUp() noexcept {
    if (m_counted) {
        letGo(m_pEntry);
    }
}
