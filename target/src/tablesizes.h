// Sizes of the tables that are there from the start, so that nothing is allocated while an engine runs. They lie in
// zeroed memory that costs nothing before it is touched.
#pragma once

#include <cstddef>
#include <cstdint>

namespace showbudget
{
constexpr uint32_t MAX_BUDGETS = 256; // with "Other"
constexpr uint32_t MAX_SITES = 4096;  // call sites, with the two below
constexpr uint32_t MAX_THREADS = 128; // threads that are inside of scopes during their lives, at one time
constexpr uint32_t MAX_COMMANDS = 256;

// Counters index 0 stands for "no scope is open"; the last site stands for all that found no room.
constexpr uint32_t SITE_NONE = 0;
constexpr uint32_t SITE_OVERFLOW = MAX_SITES - 1;

// Budget 0 takes the time that no scope covers.
constexpr uint32_t BUDGET_OTHER = 0;

constexpr size_t MAX_PRINT_BYTES = 2000;
constexpr size_t FRAME_QUEUE_BYTES = 2u << 20;
constexpr uint32_t MAX_HOSTS = 4;

constexpr uint32_t MAX_RECORD_NODES = 1u << 16; // paths of scopes
constexpr size_t RECORD_QUEUE_BYTES = 8u << 20;
} // namespace showbudget
