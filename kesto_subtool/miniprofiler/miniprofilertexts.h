// Every number that the mini-profiler shows, as text.
#pragma once

#include <QString>
#include <QStringList>

#include "miniprofiler/miniprofileroverhead.h"
#include "miniprofiler/miniprofilerrow.h"
#include "miniprofiler/miniprofilerunits.h"

// Which statistics are shown, and times in what unit.
struct MiniProfilerNumbers
{
	MiniProfilerUnit m_Unit = MiniProfilerUnits()[MINIPROFILER_DEFAULT_UNIT];
	double m_flFactor = 1.0; // ticks are multiplied by it
	bool m_bPeaks = false;
	bool m_bStDev = false;
	bool m_bCur = false;
	bool m_bAve = true;

	// The array of the first statistic that is shown; Peaks without any.
	MiniProfilerSortArray SortArray() const;
};

// One column's statistics.
struct MiniProfilerValues
{
	float m_flCur = 0.0f;
	float m_flAve = 0.0f;
	float m_flStDev = 0.0f;
	float m_flPeak = 0.0f;

	static MiniProfilerValues Of( const CMiniProfilerRow &row, int nColumn );
};

// "12 [11.5] ± 0.8 -> 14", of which only what is shown.
QString MiniProfilerCallText( const MiniProfilerValues &values, const MiniProfilerNumbers &numbers );

// "1.2 [1.1] +- 0.3 -> 2.0" in the unit, without its name. The deviation's separator is not that of calls, which is
// deliberate.
QString MiniProfilerTimeText( const MiniProfilerValues &values, const MiniProfilerNumbers &numbers );

// How a number cell reads, and how loud.
enum class MiniProfilerEmphasis
{
	Normal,
	Approximate, // a group whose exclusive time is not its inclusive time: light gray
	Faint        // nothing that is shown would print as more than 0
};
struct MiniProfilerCellText
{
	QString m_Text; // "~…~" when approximate
	MiniProfilerEmphasis m_Emphasis = MiniProfilerEmphasis::Normal;
};
MiniProfilerCellText MiniProfilerNumberText(
	const CMiniProfilerRow &row, int nColumn, const MiniProfilerNumbers &numbers ); // columns 1 to 5

// A row as tab-separated text in one line: its whole name and its five numbers, as shown.
QString MiniProfilerRowText( const CMiniProfilerRow &row, const MiniProfilerNumbers &numbers );

// Header labels; the interval is "frame" or "tick".
QStringList MiniProfilerHeaderLabels( const QString &unit, const QString &interval );

// What a selection sums up to: "12.0μs/frame, 34 calls".
QString MiniProfilerSummaryText(
	const CMiniProfilerGroup &sum, const MiniProfilerNumbers &numbers, const QString &interval );

// What profiling costs, for the overhead label and its tool tip.
struct MiniProfilerOverhead
{
	const CMiniProfilerCostHistory &m_History; // not empty
	MiniProfilerCounters m_Counters;
	float m_flKestoTicks = 0.0f;   // average of the cost record
	uint64_t m_nDataViewTicks = 0; // the last regeneration
	uint64_t m_nPaintTicks = 0;    // all cells painted since the last text
	size_t m_nIgnoredIds = 0;
};
QString MiniProfilerOverheadText( const MiniProfilerOverhead &overhead, const MiniProfilerNumbers &numbers );
QString MiniProfilerOverheadToolTip( const MiniProfilerOverhead &overhead, const MiniProfilerNumbers &numbers );
