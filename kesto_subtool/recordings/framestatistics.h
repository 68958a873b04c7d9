// Adds the entries of one frame to maxima and sums.
#pragma once

#include <cstdint>

#include "recordings/kestofile.h"

// The time of largest magnitude wins; equal ones leave the earlier frame.
void AddToStatistics(
	CKestoFile::Maximum &maximum, CKestoFile::Sum &sum, const CKestoFile::CTickTimings::Entry &entry, int32_t nFrame );

// Slots nFirst to nFirst + nCount - 1 of a frame, of which pMaxima[0] and pSums[0] belong to the first.
void AddToStatistics( CKestoFile::Maximum *pMaxima, CKestoFile::Sum *pSums,
	const CKestoFile::CTickTimings::Storage &frame, int32_t nFirst, int32_t nCount, int32_t nFrame );
