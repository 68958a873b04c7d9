#include "tools/convert/chromehandler.h"

#include <algorithm>
#include <charconv>

#include "tools/convert/decimal.h"
#include "tools/convert/ownkeys.h"

namespace convert
{
CChromeHandler::CChromeHandler( CJsonInput &input, CTrace &trace )
	: m_Input( input )
	, m_Trace( trace )
	, m_nProcessNameId( trace.m_Names.Intern( "process_name" ) )
	, m_nThreadNameId( trace.m_Names.Intern( "thread_name" ) )
{
}

// A short text as one number, so that keys are told apart by a single comparison. Longer ones are told apart by their
// length only.
static constexpr uint64_t Packed( std::string_view text )
{
	uint64_t nPacked = text.size(); // so that bytes of 0 count, too
	if ( text.size() <= 4 )
		for ( const char c : text )
			nPacked = nPacked << 8 | static_cast<unsigned char>( c );
	return nPacked;
}

CChromeHandler::Field CChromeHandler::FieldOf( std::string_view key )
{
	switch ( Packed( key ) )
	{
		case Packed( "ph" ):
			return Field::Phase;
		case Packed( "ts" ):
			return Field::Time;
		case Packed( "pid" ):
			return Field::Process;
		case Packed( "tid" ):
			return Field::Thread;
		case Packed( "dur" ):
			return Field::Duration;
		case Packed( "name" ):
			return Field::Name;
		case Packed( "args" ):
			return Field::Arguments;
		default:
			return Field::Other;
	}
}

bool CChromeHandler::Key( const char *pText, rapidjson::SizeType nLength, bool )
{
	const std::string_view key( pText, nLength );
	if ( InEvents() )
	{
		if ( m_nDepth == m_nListDepth + 1 )
			m_Field = FieldOf( key );
		else if ( m_nDepth == m_nListDepth + 2 && m_Field == Field::Arguments )
			m_Argument = key == "name" ? Argument::Name : key == KESTO_CALLS_KEY ? Argument::Calls : Argument::Other;
		return true;
	}
	if ( m_nDepth == 1 )
		m_TopKey = key == "traceEvents" ? TopKey::Events : key == KESTO_KEY ? TopKey::Kesto : TopKey::Other;
	m_bFrameKey = m_nDepth == 2 && m_TopKey == TopKey::Kesto && key == KESTO_FRAME_KEY;
	return true;
}

bool CChromeHandler::String( const char *pText, rapidjson::SizeType nLength, bool )
{
	Scalar( { pText, nLength }, true );
	return !m_bSpoolFailed;
}

bool CChromeHandler::RawNumber( const char *pText, rapidjson::SizeType nLength, bool )
{
	Scalar( { pText, nLength }, false );
	return !m_bSpoolFailed;
}

void CChromeHandler::Scalar( std::string_view text, bool bString )
{
	if ( !InEvents() )
	{
		m_Input.LimitValue();
		if ( m_bFrameKey && m_nDepth == 2 && bString )
			m_Trace.m_FrameName = text;
		return;
	}
	if ( m_nDepth == m_nListDepth + 1 )
		SetField( text, bString );
	else if ( m_nDepth == m_nListDepth + 2 && m_Field == Field::Arguments )
	{
		if ( m_Argument == Argument::Name && bString )
			m_ArgumentName = text;
		else if ( m_Argument == Argument::Calls )
			std::from_chars( text.data(), text.data() + text.size(), m_nCalls );
	}
}

// Times and ids are taken as numbers and as texts of numbers alike: some tools quote them.
void CChromeHandler::SetField( std::string_view text, bool bString )
{
	switch ( m_Field )
	{
		case Field::Phase:
			m_cPhase = bString && text.size() == 1 ? text[0] : '\0';
			break;
		case Field::Name:
			m_nName = bString ? m_Trace.m_Names.Intern( text ) : NO_NAME;
			break;
		case Field::Time:
			m_nTime = ParseTime( text, MICROSECONDS );
			break;
		case Field::Duration:
			m_bDuration = true;
			m_nDuration = ParseTime( text, MICROSECONDS );
			break;
		case Field::Process:
			m_Process = text;
			break;
		case Field::Thread:
			m_Thread = text;
			break;
		case Field::Arguments:
		case Field::Other:
			break;
	}
}

bool CChromeHandler::Open()
{
	m_nDepth++;
	if ( !InEvents() )
		m_Input.LimitValue();
	return m_nDepth <= MAX_JSON_DEPTH;
}

bool CChromeHandler::StartObject()
{
	if ( IsBetweenEvents() )
		BeginEvent();
	return Open();
}

bool CChromeHandler::EndObject( rapidjson::SizeType )
{
	m_nDepth--;
	if ( IsBetweenEvents() )
		EndEvent();
	return !m_bSpoolFailed;
}

bool CChromeHandler::StartArray()
{
	const bool bList = m_nDepth == 0 || ( m_nDepth == 1 && !InEvents() && m_TopKey == TopKey::Events );
	if ( !Open() )
		return false;
	if ( bList )
	{
		m_bFoundEvents = true;
		m_nListDepth = m_nDepth;
	}
	return true;
}

bool CChromeHandler::EndArray( rapidjson::SizeType )
{
	if ( IsBetweenEvents() )
		m_nListDepth = 0;
	m_nDepth--;
	return true;
}

void CChromeHandler::ExpectEvent()
{
	m_nDepth = m_nListDepth = 1;
}

void CChromeHandler::BeginEvent()
{
	m_nOffset = m_Input.Position() - 1;
	m_Input.LimitValue();
	m_Field = Field::Other;
	m_Argument = Argument::Other;
	m_cPhase = '\0';
	m_nName = NO_NAME;
	m_nCalls = 1;
	m_nTime.reset();
	m_nDuration.reset();
	m_bDuration = false;
	m_Process.assign( 1, '0' );
	m_Thread.assign( 1, '0' );
	m_ArgumentName.clear();
}

void CChromeHandler::EndEvent()
{
	switch ( m_cPhase )
	{
		case 'B':
			return AddEvent( EventKind::Begin );
		case 'E':
			return AddEvent( EventKind::End );
		case 'X':
			return AddEvent( EventKind::Complete );
		case 'i':
		case 'I':
		case 'R':
			return AddEvent( EventKind::Instant );
		case 'M':
			return AddMetadata();
		case '\0':
			return m_Trace.m_Report.Add( Repair::UnusableEvent, m_nOffset );
		default:
			return m_Trace.m_Report.Add( Note::OtherKind );
	}
}

void CChromeHandler::AddMetadata()
{
	if ( m_nName == m_nProcessNameId )
		m_Trace.m_Threads.NameProcess( m_Process, m_ArgumentName );
	else if ( m_nName == m_nThreadNameId )
		m_Trace.m_Threads.Get( m_Trace.m_Threads.Find( m_Process, m_Thread ) ).m_Name = m_ArgumentName;
}

void CChromeHandler::AddEvent( EventKind kind )
{
	const bool bNamed = m_nName != NO_NAME || kind == EventKind::End;
	if ( !m_nTime || !bNamed || ( m_bDuration && !m_nDuration ) )
		return m_Trace.m_Report.Add( Repair::UnusableEvent, m_nOffset );
	TraceEvent event;
	event.m_nTime = *m_nTime;
	event.m_nDuration = kind == EventKind::Complete ? m_nDuration.value_or( 0 ) : 0;
	event.m_nName = m_nName;
	event.m_nThread = m_Trace.m_Threads.Find( m_Process, m_Thread );
	event.m_nCalls = m_nCalls;
	event.m_Kind = kind;
	m_bSpoolFailed = !m_Trace.Add( event, m_nOffset );
}
} // namespace convert
