// The budgets of an engine as comma-separated values, a row per frame.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tools/csvwriter.h"

// Takes the payloads of 'PCAT' and 'PCPU' as they come. The first list of budgets makes the columns: frame, seconds
// (since the first frame), frame_rate, begins_tick (1 or 0), NAME_us for each budget, total_us. When the engine sends
// another list later, budgets of the same name go on in their column; those that are gone leave it empty, and for new
// ones there is none.
class CBudgetSheet
{
public:
	explicit CBudgetSheet( COutputFile &output )
		: m_Csv( output )
	{
	}

	// False when the output cannot be written. A payload that makes no sense is left out and counted.
	bool AddCategories( std::span<const uint8_t> payload );
	bool AddSample( std::span<const uint8_t> payload, double flSeconds ); // of any clock

	int64_t FrameCount() const { return m_nFrames; }
	int64_t MalformedCount() const { return m_nMalformed; }

	// Names of budgets without a column, as they came; the first MAX_LEFT_OUT of them. An engine may have new ones for
	// ever.
	const std::vector<std::string> &LeftOut() const { return m_LeftOut; }
	bool IsMoreLeftOut() const { return m_bMoreLeftOut; }

	static constexpr size_t MAX_LEFT_OUT = 20;

private:
	bool WriteHeadings();
	void MapColumns( const std::vector<std::string> &names );
	void NoteLeftOut( const std::string &name );

	CCsvWriter m_Csv;
	std::vector<std::string> m_Names; // of the columns
	std::vector<int> m_Places;        // by column: the budget's place in a sample; -1 = gone
	uint32_t m_nBudgets = 0;          // in the engine's last list
	bool m_bHeadings = false;
	double m_flFirst = 0.0;
	int64_t m_nFrames = 0;
	int64_t m_nMalformed = 0;
	std::vector<std::string> m_LeftOut;
	bool m_bMoreLeftOut = false;
};
