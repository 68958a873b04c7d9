#include "tools/convert/report.h"

#include <algorithm>

namespace convert
{
// Indexed by Repair; a count stands in front, in the plural when it is not 1.
struct Texts
{
	const char *m_pOne;
	const char *m_pMany;
};

static constexpr Texts REPAIRS[] = {
	{ "early end of the input", "early ends of the input" },
	{ "stretch that could not be read was left out", "stretches that could not be read were left out" },
	{ "event without a usable kind, name or time was left out",
		"events without a usable kind, name or time were left out" },
	{ "time below 0 was taken as 0", "times below 0 were taken as 0" },
	{ "event out of order was sorted", "events out of order were sorted" },
	{ "end without a begin was left out", "ends without a begin were left out" },
	{ "begin without an end was ended with what is around it",
		"begins without an end were ended with what is around them" },
	{ "scope was cut at the end of the scope around it", "scopes were cut at the end of the scope around them" },
};
static_assert( std::size( REPAIRS ) == static_cast<size_t>( Repair::Count ) );

static constexpr Texts NOTES[] = {
	{ "event of a kind that is no scope was left out", "events of kinds that are no scopes were left out" },
	{ "scope before the first frame was left out", "scopes before the first frame were left out" },
	{ "frame in which nothing ran was left out: 1000 in a row are kept",
		"frames in which nothing ran were left out: 1000 in a row are kept" },
	{ "long name was cut", "long names were cut" },
	{ "name has characters that the target cannot hold; they were replaced",
		"names have characters that the target cannot hold; they were replaced" },
	{ "scope got a common name: there are too many names", "scopes got a common name: there are too many names" },
	{ "node was left out: a recording holds 1048576 of them",
		"nodes were left out: a recording holds 1048576 of them" },
	{ "time over 35 minutes was cut to that", "times over 35 minutes were cut to that" },
	{ "negative time was written as 0", "negative times were written as 0" },
	{ "number of calls over 65535 was cut to that", "numbers of calls over 65535 were cut to that" },
	{ "number of calls is not held by the target", "numbers of calls are not held by the target" },
	{ "frame was written", "frames were added up: the target has no frames" },
	{ "text of the string table is not held by the target", "texts of the string table are not held by the target" },
	{ "node's value is not held by the target", "values of nodes are not held by the target" },
	{ "time is shorter than the times below it and was widened",
		"times are shorter than the times below them and were widened" },
	{ "time was rounded to the recording's 4 microseconds", "times were rounded to the recording's 4 microseconds" },
	{ "node that the root does not reach was left out", "nodes that the root does not reach were left out" },
	{ "node deeper than 4096 levels was added to what is around it",
		"nodes deeper than 4096 levels were added to what is around them" },
	{ "scope went into its frame's time for its node: it is not shown when it ran",
		"scopes were added up by frame and node: it is not shown when each of them ran" },
};
static_assert( std::size( NOTES ) == static_cast<size_t>( Note::Count ) );

static std::string Counted( uint64_t nCount, const Texts &texts )
{
	return std::to_string( nCount ) + ' ' + ( nCount == 1 ? texts.m_pOne : texts.m_pMany );
}

void CReport::Add( Repair repair, int64_t nOffset, const char *pDetail )
{
	Counter &counter = m_Repairs[static_cast<size_t>( repair )];
	if ( counter.m_nCount++ == 0 )
	{
		counter.m_nOffset = nOffset;
		counter.m_Detail = pDetail;
	}
}

bool CReport::IsDamaged() const
{
	return std::any_of(
		m_Repairs.begin(), m_Repairs.end(), []( const Counter &counter ) { return counter.m_nCount > 0; } );
}

std::vector<std::string> CReport::Lines() const
{
	std::vector<std::string> lines;
	for ( size_t i = 0; i < m_Repairs.size(); i++ )
	{
		const Counter &counter = m_Repairs[i];
		if ( counter.m_nCount == 0 )
			continue;
		std::string line = Counted( counter.m_nCount, REPAIRS[i] );
		if ( counter.m_nOffset >= 0 )
			line +=
				( counter.m_nCount == 1 ? ", at byte " : ", the first at byte " ) + std::to_string( counter.m_nOffset );
		if ( !counter.m_Detail.empty() )
			line += ": " + counter.m_Detail;
		lines.push_back( std::move( line ) );
	}
	for ( size_t i = 0; i < m_Notes.size(); i++ )
		if ( m_Notes[i] > 0 )
			lines.push_back( Counted( m_Notes[i], NOTES[i] ) );
	lines.insert( lines.end(), m_Texts.begin(), m_Texts.end() );
	return lines;
}
} // namespace convert
