// Frame rates of samples, and the colour that says how good one is.
#pragma once

#include <QRgb>
#include <cstdint>

#include "views/budgetviewdata.h"

// In frames per second, as the graph draws it: what the target averaged while "FPS Averages" is on, else the inverse of
// the frame total, 0 for a frame without time. nSample is a sample number, its slot is read.
float SampleFrameRate( const BudgetViewData &data, int64_t nSample );

// The time of the whole frame in microseconds; 0 before there are budgets.
uint32_t SampleFrameTime( const BudgetViewData &data, int64_t nSample );

// Red up to the lower marker, through yellow half way, to green at the upper marker and beyond. Any input gives a
// colour; a rate that is not a number counts as the worst.
QRgb FrameRateColour( float flRate, float flLower, float flUpper );
