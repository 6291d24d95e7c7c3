#include "QueltDataMigration.h"

void QueltDataMigration() {}
