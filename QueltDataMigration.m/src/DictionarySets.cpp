#include "DictionarySets.h"

#include "dictionary/QueltEeModelDico.h"
#include "infrastructure/QueltInSet.h"

namespace quelt {

long keepOnly(QueltEeModelDico& holder, QueltInSet& possible, QueltInSet& rejected,
              const MigrationTrace& trace, std::source_location where) {
    if (possible.GetLength() <= 1) {
        return S_OK;
    }
    rejected.PutSet(possible);
    if (rejected.badCastErr() != 0) {
        return trace.fail("ERROR : Unable to put possible MDs set into rejected MDs set.", E_FAIL, where);
    }
    rejected.Remove(holder);
    possible.Clear();
    return possible.Put(holder) == 0 ? trace.fail("ERROR : unexpected", E_FAIL, where) : S_OK;
}

} // namespace quelt
