#include "tools/convert/chromehandler.h"
#include "tools/convert/importers.h"

namespace convert
{
namespace
{
class CChromeImport
{
public:
	CChromeImport( CInputStream &input, CTrace &trace )
		: m_Input( input )
		, m_Stream( input )
		, m_Trace( trace )
		, m_Handler( m_Stream, trace )
	{
	}

	bool Run( ImportProblem &problem )
	{
		bool bGood = Parse();
		if ( !bGood && !m_Handler.FoundEvents() )
		{
			const char *pWhy = m_Input.IsAtLimit() ? "A value is longer than 32 MiB." : ErrorText();
			problem = { std::string( "no list of events: " ) + pWhy, ErrorOffset() };
			return false;
		}
		SkipSpace();
		if ( bGood && !m_Stream.IsCut() )
			m_Trace.m_Report.Add( Repair::Unreadable, m_Stream.Position(), "text behind the end" );
		while ( !bGood && !m_Handler.SpoolFailed() && m_Handler.InEvents() && FindNextEvent() )
			bGood = ParseSingleEvents();
		return Conclude( problem );
	}

private:
	bool Parse() { return !m_Reader.Parse<JSON_FLAGS>( m_Stream, m_Handler ).IsError(); }
	const char *ErrorText() const { return rapidjson::GetParseError_En( m_Reader.GetParseErrorCode() ); }
	int64_t ErrorOffset() const { return static_cast<int64_t>( m_Reader.GetErrorOffset() ); }

	// Behind an error: counts it and moves to what looks like the begin of an event. False at the end of the input.
	bool FindNextEvent()
	{
		if ( m_Stream.IsCut() )
		{
			m_Trace.m_Report.Add( Repair::Cut, m_Stream.Position() );
			return false;
		}
		m_Trace.m_Report.Add( Repair::Unreadable, ErrorOffset(), ErrorText() );
		m_Stream.LiftLimit();
		if ( m_Stream.Peek() == '{' ) // a comma or the end of the event before it is missing
			return true;
		// "}", ",", "{" in this order, with nothing but white space between them.
		for ( char cBefore = '\0'; !m_Stream.AtEnd(); )
		{
			const char c = m_Stream.Peek();
			if ( c == '{' && cBefore == ',' )
				return true;
			if ( c == '}' || ( c == ',' && cBefore == '}' ) )
				cBefore = c;
			else if ( !IsSpace( c ) )
				cBefore = '\0';
			m_Stream.Take();
		}
		m_Trace.m_Report.Add( Repair::Cut, m_Stream.Position() );
		return false;
	}

	// The events up to the end of the list; false on the next error.
	bool ParseSingleEvents()
	{
		for ( ;; )
		{
			m_Handler.ExpectEvent();
			if ( !Parse() )
				return false;
			SkipSpace();
			if ( m_Stream.Peek() == ']' )
				return true;
			if ( m_Stream.Peek() == ',' )
			{
				m_Stream.Take();
				SkipSpace();
			}
		}
	}

	static bool IsSpace( char c ) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }
	void SkipSpace()
	{
		while ( IsSpace( m_Stream.Peek() ) )
			m_Stream.Take();
	}

	bool Conclude( ImportProblem &problem )
	{
		if ( m_Handler.SpoolFailed() )
			problem.m_Text = m_Trace.m_Spool.Problem();
		else if ( !m_Input.Problem().empty() )
			problem = { m_Input.Problem(), m_Stream.Position() };
		else if ( !m_Handler.FoundEvents() )
			problem = { "no list of events: the object has no \"traceEvents\"", 0 };
		else if ( m_Trace.m_Report.IsDamaged() && m_Trace.m_Spool.Count() == 0 )
			problem = { "no event could be read", 0 };
		return problem.m_Text.empty();
	}

	CInputStream &m_Input;
	CJsonInput m_Stream;
	CTrace &m_Trace;
	CChromeHandler m_Handler;
	rapidjson::Reader m_Reader;
};
} // namespace

bool ImportChrome( CInputStream &input, CTrace &trace, ImportProblem &problem )
{
	return CChromeImport( input, trace ).Run( problem );
}
} // namespace convert
