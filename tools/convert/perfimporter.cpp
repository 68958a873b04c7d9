#include <algorithm>
#include <map>
#include <vector>

#include "tools/convert/importers.h"
#include "tools/convert/lineinput.h"
#include "tools/convert/sampleweight.h"

namespace convert
{
namespace
{
constexpr std::string_view SPACES = " \t";

std::string_view Trim( std::string_view text )
{
	const size_t nFirst = text.find_first_not_of( SPACES );
	return nFirst == std::string_view::npos ? std::string_view()
											: text.substr( nFirst, text.find_last_not_of( SPACES ) - nFirst + 1 );
}

bool IsAll( std::string_view text, const char *pCharacters )
{
	return !text.empty() && text.find_first_not_of( pCharacters ) == std::string_view::npos;
}

// Takes the first word off the text.
std::string_view TakeWord( std::string_view &text )
{
	text = Trim( text );
	const size_t nEnd = std::min( text.find_first_of( SPACES ), text.size() );
	const std::string_view word = text.substr( 0, nEnd );
	text.remove_prefix( nEnd );
	return word;
}

std::string_view TakeLastWord( std::string_view &text )
{
	text = Trim( text );
	const size_t nSpace = text.find_last_of( SPACES );
	const size_t nFirst = nSpace == std::string_view::npos ? 0 : nSpace + 1;
	const std::string_view word = text.substr( nFirst );
	text = text.substr( 0, nFirst );
	return word;
}

// "COMMAND PID/TID [CPU] SECONDS: PERIOD EVENT: ...", of which "PID/", "[CPU]" and PERIOD need not be there.
struct SampleHead
{
	std::string_view m_Command;
	std::string_view m_Process;
	std::string_view m_Thread;
	int64_t m_nTime = 0; // nanoseconds
	std::string_view m_Period;
	std::string_view m_Event;
	std::string_view m_Rest; // an address with its symbol, when there is no stack
};

// A command may have spaces and colons of its own, so the time is the first word that looks like one and has a process
// in front.
bool ParseHead( std::string_view line, SampleHead &head )
{
	constexpr const char *DIGITS = "0123456789";
	for ( size_t nColon = line.find( ':' ); nColon != std::string_view::npos; nColon = line.find( ':', nColon + 1 ) )
	{
		std::string_view front = line.substr( 0, nColon );
		const std::string_view time = TakeLastWord( front );
		if ( !IsAll( time, "0123456789." ) || time.find( '.' ) == std::string_view::npos )
			continue;
		std::string_view ids = TakeLastWord( front );
		for ( int i = 0; i < 2 && !IsAll( ids, "0123456789/" ); i++ ) // the CPU, and flags
			ids = TakeLastWord( front );
		const size_t nSlash = ids.find( '/' );
		head.m_Process = ids.substr( 0, nSlash );
		head.m_Thread = nSlash == std::string_view::npos ? ids : ids.substr( nSlash + 1 );
		const std::optional<int64_t> nTime = ParseTime( time, SECONDS );
		if ( !nTime || !IsAll( head.m_Process, DIGITS ) || !IsAll( head.m_Thread, DIGITS ) )
			continue;
		head.m_nTime = *nTime;
		head.m_Command = Trim( front );
		head.m_Rest = line.substr( nColon + 1 );
		head.m_Event = TakeWord( head.m_Rest );
		head.m_Period = {};
		if ( IsAll( head.m_Event, DIGITS ) )
		{
			head.m_Period = head.m_Event;
			head.m_Event = TakeWord( head.m_Rest );
		}
		return true;
	}
	return false;
}

// "ADDRESS SYMBOL+0xOFFSET (OBJECT)"
bool ParseStackLine( std::string_view line, std::string &symbol )
{
	if ( !IsAll( TakeWord( line ), "0123456789abcdefABCDEF" ) )
		return false;
	line = Trim( line );
	std::string_view object;
	if ( const size_t nObject = line.rfind( " (" ); nObject != std::string_view::npos && line.ends_with( ')' ) )
	{
		object = line.substr( nObject + 2, line.size() - nObject - 3 );
		line = Trim( line.substr( 0, nObject ) );
	}
	if ( const size_t nOffset = line.rfind( "+0x" ); nOffset != std::string_view::npos )
		line = line.substr( 0, nOffset );
	symbol = line;
	if ( line == "[unknown]" || line.empty() )
		symbol = "[unknown] (" + std::string( object.substr( object.rfind( '/' ) + 1 ) ) + ')';
	return true;
}

class CPerfImport
{
public:
	CPerfImport( CInputStream &input, CTrace &trace, const ImportOptions &options )
		: m_Input( input )
		, m_Trace( trace )
		, m_Weight( options )
		, m_Lines( input )
	{
	}

	bool Run( ImportProblem &problem )
	{
		for ( std::string_view line; m_bGood && m_Lines.Next( line ); )
			TakeLine( line );
		if ( m_bInSample && !m_Lines.IsTerminated() )
			m_Trace.m_Report.Add( Repair::Cut, m_Input.Position() );
		EndSample();
		EndThreads();
		if ( !m_bGood )
			problem.m_Text = m_Trace.m_Spool.Problem();
		else if ( !m_Input.Problem().empty() )
			problem = { m_Input.Problem(), m_Input.Position() };
		else if ( m_Trace.m_Report.IsDamaged() && m_Trace.m_Spool.Count() == 0 )
			problem = { "no line is the head of a sample: command, process, seconds, event", 0 };
		return problem.m_Text.empty();
	}

private:
	static constexpr size_t MAX_DEPTH = 4096;
	static constexpr size_t MAX_INTERVALS = 1u << 20; // that are looked at to find the usual one

	void TakeLine( std::string_view line )
	{
		std::string symbol;
		SampleHead head;
		if ( Trim( line ).empty() )
			EndSample();
		else if ( line.starts_with( '#' ) && !m_bInSample )
			return;
		else if ( m_bInSample && ParseStackLine( line, symbol ) )
			AddSymbol( symbol );
		else if ( ParseHead( line, head ) )
			BeginSample( head );
		else
			m_Trace.m_Report.Add(
				Repair::Unreadable, m_Lines.Offset(), "neither the head of a sample nor a line of its stack" );
	}

	void AddSymbol( const std::string &symbol )
	{
		if ( m_Symbols.size() < MAX_DEPTH )
			m_Symbols.push_back( m_Trace.m_Names.Intern( symbol ) );
	}

	void BeginSample( const SampleHead &head )
	{
		EndSample();
		m_bInSample = true;
		m_nOffset = m_Lines.Offset();
		m_Event = TraceEvent();
		m_Event.m_Kind = EventKind::Sample;
		m_Event.m_nTime = head.m_nTime;
		m_Event.m_nThread = m_Trace.m_Threads.Find( head.m_Process, head.m_Thread );
		m_Trace.m_Threads.Get( m_Event.m_nThread ).m_Name = head.m_Command;
		const bool bClock = head.m_Event.starts_with( "cpu-clock" ) || head.m_Event.starts_with( "task-clock" );
		if ( !m_bAnySample )
			m_bPeriods = bClock && !head.m_Period.empty();
		m_bAnySample = true;
		m_Period = ParseTime( head.m_Period, NANOSECONDS );
		std::string symbol;
		if ( ParseStackLine( head.m_Rest, symbol ) )
			AddSymbol( symbol );
	}

	void EndSample()
	{
		if ( !m_bInSample )
			return;
		m_bInSample = false;
		uint32_t nStack = CStackTable::EMPTY_STACK;
		for ( size_t i = m_Symbols.size(); i-- > 0; ) // the innermost one comes first
			nStack = m_Trace.m_Stacks.Push( nStack, m_Symbols[i] );
		m_Symbols.clear();
		m_Event.m_nName = nStack;
		if ( m_Weight.IsGiven() )
			Add( m_Event, m_Weight.Time( 1 ), m_nOffset );
		else if ( m_bPeriods )
			Add( m_Event, m_Period.value_or( 0 ), m_nOffset );
		else
			AddByInterval();
	}

	// A sample counts up to the next one of its thread.
	void AddByInterval()
	{
		Pending &pending = m_Pending[m_Event.m_nThread];
		if ( pending.m_nOffset >= 0 )
		{
			const int64_t nInterval = std::max<int64_t>( m_Event.m_nTime - pending.m_Event.m_nTime, 0 );
			if ( m_Intervals.size() < MAX_INTERVALS )
				m_Intervals.push_back( nInterval );
			Add( pending.m_Event, nInterval, pending.m_nOffset );
		}
		pending = { m_Event, m_nOffset };
	}

	// Where a thread slept the next sample is far: then a sample counts twice the usual interval. The last one of a
	// thread counts once.
	void EndThreads()
	{
		int64_t nUsual = 1'000'000; // where there is nothing to go by
		if ( !m_Intervals.empty() )
		{
			const auto itMiddle = m_Intervals.begin() + static_cast<ptrdiff_t>( m_Intervals.size() / 2 );
			std::nth_element( m_Intervals.begin(), itMiddle, m_Intervals.end() );
			nUsual = *itMiddle;
			m_Trace.m_nLongestSample = std::min( 2 * nUsual, MAX_TIME );
		}
		for ( const auto &[nThread, pending] : m_Pending )
			Add( pending.m_Event, nUsual, pending.m_nOffset );
	}

	void Add( TraceEvent event, int64_t nDuration, int64_t nOffset )
	{
		event.m_nDuration = nDuration;
		m_bGood = m_bGood && m_Trace.Add( event, nOffset );
	}

	struct Pending
	{
		TraceEvent m_Event;
		int64_t m_nOffset = -1;
	};

	CInputStream &m_Input;
	CTrace &m_Trace;
	CSampleWeight m_Weight;
	CLineInput m_Lines;
	bool m_bGood = true;
	bool m_bAnySample = false;
	bool m_bPeriods = false;               // the first sample's period was a time, so all are
	std::map<uint32_t, Pending> m_Pending; // by thread
	std::vector<int64_t> m_Intervals;

	// The sample at hand.
	bool m_bInSample = false;
	int64_t m_nOffset = 0;
	TraceEvent m_Event;
	std::optional<int64_t> m_Period;
	std::vector<uint32_t> m_Symbols; // from the innermost one
};
} // namespace

bool ImportPerfScript( CInputStream &input, CTrace &trace, const ImportOptions &options, ImportProblem &problem )
{
	return CPerfImport( input, trace, options ).Run( problem );
}
} // namespace convert
