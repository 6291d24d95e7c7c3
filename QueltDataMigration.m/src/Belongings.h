#pragma once

#include "expression/QueltEeLeaves.h"
#include "infrastructure/QueltInSmallVector.h"

class QueltEeGroupOp;

namespace quelt {

/// What a conversion has made on its way and handed to nobody yet: groups that join nodes of the caller's
/// tree, copies of date criteria, operations. Deleted with the object, unless handed over before.
class Belongings {
public:
    Belongings() = default;
    ~Belongings();
    Belongings(const Belongings&) = delete;
    Belongings& operator=(const Belongings&) = delete;

    /// Keeps `object` (null is accepted) until it is handed over; gives it back.
    template <class Object>
    Object* keep(Object* object) {
        add(object);
        return object;
    }
    /// `object` (which may be unknown here, and null) is somebody else's from now on. True when it was kept
    /// here.
    bool handOver(const QueltInObject* object);
    /// Deletes `object` when it is kept here.
    void destroy(QueltInObject* object);

    /// `output` belongs to the owner of a map from now on, for good.
    void noteFiled(const QueltInObject& output);
    /// Keeps an output (null is accepted) that will not be filed any more; one that was filed before is left
    /// alone.
    void keepUnfiled(QueltInObject* output);
    /// Deletes an output (null is accepted), unless it was filed.
    void destroyUnfiled(QueltInObject* output);

    /// A new AND, or OR, without children. It stays here: other groups get aliases of it.
    QueltEeGroupOp& makeGroup(bool isAnd);
    /// Deletes `group` when it was made here.
    void destroyGroup(QueltEeGroupOp& group);
    /// Adds `node`, which stays whose it is, to `group`, which was made here.
    static void join(QueltEeGroupOp& group, QueltEeNode& node);
    /// A group that says what `group` says and to which children may be added without changing what the
    /// caller owns: `group` itself when it was made here, else a new one with aliases of its children.
    QueltEeGroupOp& makeExtensible(QueltEeGroupOp& group);

private:
    void add(QueltInObject* object);
    [[nodiscard]] bool isFiled(const QueltInObject* output) const;

    // What is handed over is nearly always the last that came: groups, which stay, stand apart.
    QueltInSmallVector<QueltInObject*, 8> m_objects;
    QueltInSmallVector<const QueltInObject*, 4> m_filed;
    QueltInSmallVector<QueltEeNodeRef*, 4> m_groups;
    // Stands for what holds the groups, and tells them from the caller's.
    QueltEeTrue m_groupHolder;
};

} // namespace quelt
