#pragma once

/// Marks what the module offers to its host; everything else of it stays hidden. A macro, because the
/// attribute differs by platform and by the side of the boundary that reads it.
#if defined(_WIN32)
#if defined(QueltDataMigration_EXPORTS)
#define QUELT_DATA_MIGRATION_API __declspec(dllexport)
#else
#define QUELT_DATA_MIGRATION_API __declspec(dllimport)
#endif
#else
#define QUELT_DATA_MIGRATION_API __attribute__((visibility("default")))
#endif
