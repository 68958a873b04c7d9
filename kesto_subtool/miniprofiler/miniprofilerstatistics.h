// What a record's samples say: newest, average, deviation and peak of calls and times.
#pragma once

#include <memory>
#include <span>

#include "miniprofiler/miniprofilerhistory.h"
#include "miniprofiler/miniprofilerrow.h"

// For one record with n samples (ticks t, calls c; the newest is sample 0), in double precision:
//   Cur    calls c0, inclusive t0, inclusive per call t0 / max( c0, 1 )
//   Peaks  the largest of these over all samples with bPeaks, else the same as Cur
//   Ave    calls C / n, inclusive T / n, inclusive per call T / max( C, 1 ), where C and T are the sums
//   StDev  population deviations from Ave; per call over the samples with calls only, 0 without any
// Exclusive columns are 0: the engine sends inclusive times only. A record without samples stays as it is, one with a
// single sample keeps its deviations. The idle flag says that C and T are 0.
//
// records[i] must have history index i; all of them are computed. bWide, for processors that have the vectors for it,
// takes half as long and gives the same numbers to the last bit.
bool HasWideVectors();
void ComputeMiniProfilerStatistics( const CMiniProfilerHistory &history,
	std::span<const std::unique_ptr<CQMiniProfilerRecord>> records, bool bPeaks, bool bWide = HasWideVectors() );
