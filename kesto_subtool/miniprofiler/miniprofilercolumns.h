// The six columns of the mini-profiler, shared by every statistic.
#pragma once

#include <array>
#include <cstddef>

constexpr size_t MINIPROFILER_COLUMNS = 6;

// Times are in ticks of the engine's timer; they become seconds only where they are shown.
enum MiniProfilerColumn : int
{
	MINIPROFILER_NAME = 0,           // always 0 in the arrays
	MINIPROFILER_CALLS = 1,          // per interval
	MINIPROFILER_INCLUSIVE = 2,      // time per interval
	MINIPROFILER_EXCLUSIVE = 3,      // time per interval
	MINIPROFILER_INCLUSIVE_CALL = 4, // time per call
	MINIPROFILER_EXCLUSIVE_CALL = 5  // time per call
};

using MiniProfilerArray = std::array<float, MINIPROFILER_COLUMNS>;

// Which of a row's arrays the tree is sorted by.
enum class MiniProfilerSortArray : int
{
	Cur = 0,
	Ave = 1,
	StDev = 2,
	Peaks = 3
};
