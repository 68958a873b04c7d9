// Where the samples of the history stand: one column per sample, the newest at the right. The history bars and the
// frame-rate graph share these functions, for painting as well as for the mouse, so that their columns line up.
#pragma once

#include <cstdint>
#include <optional>

#include "views/budgetviewstyle.h"

// Sizes in pixels, fixed for the life of the window.
struct HistoryMeasures
{
	int m_nLabelWidth = 0; // right margin that stays free for axis labels
	int m_nGap = 2;        // blank on each side of a column
	int m_nBarWidth = 2;

	int Pitch() const { return m_nBarWidth + 2 * m_nGap; } // from one column to the next

	static HistoryMeasures Make( const BudgetViewStyle &style );
};

// How many columns both views have room for, given the width of the narrower one.
int HistoryVisibleColumns( const HistoryMeasures &measures, int nNarrowerWidth );

// What the scroll bar below the views offers. Its value is the sample of the leftmost column, less m_nBase.
struct HistoryScrollRange
{
	bool m_bShown = false;
	int m_nMaximum = 0;   // sample count - visible columns; the minimum is 0
	uint32_t m_nBase = 0; // 0 until the sample count outgrows the scroll bar's int

	static HistoryScrollRange Make( uint32_t nSampleCount, int nVisible, bool bCursorMode );
};

// Columns m_nFirst to m_nEnd - 1, counted from the right.
struct HistoryColumnRange
{
	int m_nFirst = 0;
	int m_nEnd = 0;

	friend bool operator==( const HistoryColumnRange &, const HistoryColumnRange & ) = default;
};

struct HistoryColumns
{
	HistoryMeasures m_Measures;
	int m_nVisible = 0;
	uint32_t m_nSampleCount = 0;
	bool m_bScrolled = false;    // the scroll bar is shown
	uint32_t m_nFirstSample = 0; // of the leftmost column; counts only while scrolled

	// The sample of the rightmost column: never one that was not taken, 0 without samples.
	int64_t NewestShown() const;

	// Columns that hold a sample; column 0 is the rightmost one, column i holds sample NewestShown() - i.
	int Filled() const;
	HistoryColumnRange AllFilled() const { return { 0, Filled() }; }

	std::optional<int> ColumnOf( uint32_t nSample ) const; // nothing when it is not on screen

	// In a view of that width: the x behind the right gap of a column, and the x of its centre.
	int RightEdge( int nWidth, int nColumn ) const;
	int Centre( int nWidth, int nColumn ) const;

	// The sample that a press or drag at x selects: left and right of the columns the outermost one, left of the oldest
	// sample sample 0. Columns are counted from x = 0, although they are drawn from the right edge: the two differ by
	// what the width leaves over, less than a pitch. That is deliberate.
	uint32_t Pick( int x ) const;

	// The same without clamping: nothing where no sample stands.
	std::optional<uint32_t> SampleUnder( int x ) const;

private:
	int64_t SampleOfPickColumn( int nPickColumn ) const;
};
