#pragma once

#include "QueltDataMigrationExport.h"

/// Names the module, so that a host can tell by its exports what it has loaded. Does nothing.
extern "C" QUELT_DATA_MIGRATION_API void QueltDataMigration();
