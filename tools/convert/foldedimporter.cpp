#include "tools/convert/decimal.h"
#include "tools/convert/importers.h"
#include "tools/convert/lineinput.h"
#include "tools/convert/ownkeys.h"
#include "tools/convert/sampleweight.h"

namespace convert
{
// The names between the semicolons.
static uint32_t FindStack( std::string_view text, CTrace &trace )
{
	uint32_t nStack = CStackTable::EMPTY_STACK;
	if ( text == FOLDED_FRAME_NAME )
		return nStack;
	for ( size_t nFirst = 0; nFirst <= text.size(); )
	{
		const size_t nEnd = std::min( text.find( ';', nFirst ), text.size() );
		nStack = trace.m_Stacks.Push( nStack, trace.m_Names.Intern( text.substr( nFirst, nEnd - nFirst ) ) );
		nFirst = nEnd + 1;
	}
	return nStack;
}

bool ImportFolded( CInputStream &input, CTrace &trace, const ImportOptions &options, ImportProblem &problem )
{
	const CSampleWeight weight( options );
	const uint32_t nThread = trace.m_Threads.Find( "0", "0" );
	CLineInput lines( input );
	for ( std::string_view line; lines.Next( line ); )
	{
		if ( line.find_first_not_of( " \t" ) == std::string_view::npos )
			continue;
		const size_t nSpace = line.find_last_of( " \t" );
		const std::string_view number =
			nSpace == std::string_view::npos ? std::string_view() : line.substr( nSpace + 1 );
		TraceEvent event;
		if ( !weight.Parse( number, MICROSECONDS, event ) )
		{
			trace.m_Report.Add( Repair::Unreadable, lines.Offset(), "a line without a number at its end" );
			continue;
		}
		event.m_Kind = EventKind::Sample;
		event.m_nThread = nThread;
		event.m_nName = FindStack( line.substr( 0, line.find_last_not_of( " \t", nSpace ) + 1 ), trace );
		if ( !trace.Add( event, lines.Offset() ) )
		{
			problem.m_Text = trace.m_Spool.Problem();
			return false;
		}
	}
	if ( !input.Problem().empty() )
		problem = { input.Problem(), input.Position() };
	else if ( trace.m_Report.IsDamaged() && trace.m_Spool.Count() == 0 )
		problem = { "no line is a folded stack: names between semicolons, a space, a number", 0 };
	return problem.m_Text.empty();
}
} // namespace convert
