#include "tools/convert/speedscopehandler.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "tools/convert/ownkeys.h"

namespace convert
{
static constexpr size_t MAX_FRAME_NAMES = 1u << 24;

// Depths of the values of {"shared":{"frames":[{"name"…}]},"profiles":[{"type"…,"events":[{"at"…}],"samples":[[0]]}]}.
static constexpr int TOP = 1;
static constexpr int PROFILE = 3;
static constexpr int FRAME = 4;
static constexpr int WEIGHT = 4;
static constexpr int EVENT = 5;

void CSpeedscopeHandler::BeginEvents()
{
	m_bEvents = true;
	m_nDepth = 0;
	m_nProfile = 0;
	m_Path.fill( Member::Other );
}

void CSpeedscopeHandler::EndEvents()
{
	if ( m_nDepth >= PROFILE )
		EndProfile();
}

CSpeedscopeHandler::Member CSpeedscopeHandler::MemberOf( std::string_view key )
{
	static constexpr std::pair<std::string_view, Member> MEMBERS[] = {
		{ KESTO_KEY, Member::Kesto },
		{ "shared", Member::Shared },
		{ "frames", Member::Frames },
		{ "profiles", Member::Profiles },
		{ "name", Member::Name },
		{ "type", Member::Type },
		{ "unit", Member::Unit },
		{ "startValue", Member::StartValue },
		{ "events", Member::Events },
		{ "samples", Member::Samples },
		{ "weights", Member::Weights },
		{ "frame", Member::Frame },
		{ "at", Member::At },
	};
	for ( const auto &[name, member] : MEMBERS )
		if ( key == name )
			return member;
	return Member::Other;
}

bool CSpeedscopeHandler::Key( const char *pText, rapidjson::SizeType nLength, bool )
{
	if ( static_cast<size_t>( m_nDepth ) < m_Path.size() )
		m_Path[static_cast<size_t>( m_nDepth )] = MemberOf( { pText, nLength } );
	return true;
}

bool CSpeedscopeHandler::String( const char *pText, rapidjson::SizeType nLength, bool )
{
	return Scalar( { pText, nLength } );
}

bool CSpeedscopeHandler::RawNumber( const char *pText, rapidjson::SizeType nLength, bool )
{
	return Scalar( { pText, nLength } );
}

bool CSpeedscopeHandler::Open()
{
	m_nDepth++;
	m_Input.LimitValue();
	if ( static_cast<size_t>( m_nDepth ) < m_Path.size() )
		m_Path[static_cast<size_t>( m_nDepth )] = Member::Other;
	return m_nDepth <= MAX_JSON_DEPTH;
}

bool CSpeedscopeHandler::StartObject()
{
	if ( !Open() )
		return false;
	if ( m_nDepth == PROFILE && m_Path[TOP] == Member::Profiles )
		BeginProfile();
	if ( m_nDepth == FRAME && m_Path[TOP] == Member::Shared && m_Path[2] == Member::Frames && !m_bEvents )
	{
		m_bHasFrames = true;
		m_FrameNames.push_back( NO_NAME );
		return m_FrameNames.size() < MAX_FRAME_NAMES;
	}
	if ( m_nDepth == EVENT && IsIn( Member::Profiles, Member::Events ) )
	{
		m_nOffset = m_Input.Position() - 1;
		m_cType = '\0';
		m_nName = NO_NAME;
		m_nTime.reset();
	}
	return true;
}

bool CSpeedscopeHandler::EndObject( rapidjson::SizeType )
{
	if ( m_nDepth == EVENT && IsIn( Member::Profiles, Member::Events ) )
		AddEvent();
	if ( m_nDepth == PROFILE && m_Path[TOP] == Member::Profiles )
		EndProfile();
	m_nDepth--;
	return !SpoolFailed();
}

bool CSpeedscopeHandler::StartArray()
{
	if ( !Open() )
		return false;
	if ( m_nDepth == EVENT && IsIn( Member::Profiles, Member::Samples ) )
	{
		m_nOffset = m_Input.Position() - 1;
		m_nStack = CStackTable::EMPTY_STACK;
		m_bGoodStack = true;
	}
	if ( m_nDepth == WEIGHT && IsIn( Member::Profiles, Member::Weights ) )
		m_nWeightsOffset = m_Input.Position() - 1;
	return true;
}

bool CSpeedscopeHandler::EndArray( rapidjson::SizeType )
{
	if ( m_nDepth == EVENT && IsIn( Member::Profiles, Member::Samples ) )
		AddSample();
	m_nDepth--;
	return !SpoolFailed();
}

bool CSpeedscopeHandler::Scalar( std::string_view text )
{
	m_Input.LimitValue();
	if ( m_nDepth == 2 && m_Path[TOP] == Member::Kesto && m_Path[2] == Member::Frame )
		m_Trace.m_FrameName = text;
	else if ( m_nDepth == FRAME && m_Path[TOP] == Member::Shared && m_Path[2] == Member::Frames &&
			  m_Path[FRAME] == Member::Name && !m_bEvents )
		m_FrameNames.back() = m_Trace.m_Names.Intern( text );
	else if ( m_nDepth == PROFILE && m_Path[TOP] == Member::Profiles && m_Path[PROFILE] != Member::Other && !m_bEvents )
		SetProfileMember( text ); // a list in a profile's place has no members and begins none
	else if ( m_nDepth == EVENT && IsIn( Member::Profiles, Member::Events ) )
		SetEventMember( text );
	else if ( m_nDepth == EVENT && IsIn( Member::Profiles, Member::Samples ) && m_bEvents )
	{
		const uint32_t nName = FrameName( text );
		m_bGoodStack = m_bGoodStack && nName != NO_NAME;
		if ( m_bGoodStack )
			m_nStack = m_Trace.m_Stacks.Push( m_nStack, nName );
	}
	else if ( m_nDepth == WEIGHT && IsIn( Member::Profiles, Member::Weights ) && m_bEvents )
		AddWeight( text );
	return !SpoolFailed();
}

const CSpeedscopeHandler::Profile &CSpeedscopeHandler::ProfileAtHand() const
{
	static const Profile UNKNOWN;
	const auto it = m_Profiles.find( m_nProfile );
	return it == m_Profiles.end() ? UNKNOWN : it->second;
}

void CSpeedscopeHandler::SetProfileMember( std::string_view text )
{
	static constexpr std::pair<std::string_view, int> UNITS[] = {
		{ "nanoseconds", NANOSECONDS },
		{ "microseconds", MICROSECONDS },
		{ "milliseconds", MILLISECONDS },
		{ "seconds", SECONDS },
	};
	if ( m_nProfiles == 0 )
		return;
	const size_t nProfile = m_nProfiles - 1;
	if ( m_Path[PROFILE] == Member::Name )
		m_Profiles[nProfile].m_Name = text;
	else if ( m_Path[PROFILE] == Member::StartValue )
		m_Profiles[nProfile].m_Start = text;
	else if ( m_Path[PROFILE] == Member::Unit )
		for ( const auto &[name, nUnit] : UNITS )
			if ( text == name )
			{
				m_Profiles[nProfile].m_nUnit = nUnit;
				m_Profiles[nProfile].m_bTime = true;
			}
}

void CSpeedscopeHandler::SetEventMember( std::string_view text )
{
	if ( !m_bEvents )
		return;
	if ( m_Path[EVENT] == Member::Type )
		m_cType = text.size() == 1 ? text[0] : '\0';
	else if ( m_Path[EVENT] == Member::Frame )
		m_nName = FrameName( text );
	else if ( m_Path[EVENT] == Member::At )
		m_nTime = TimeOf( text );
}

// NO_NAME for what is no index of the list. Where the input was cut before the list, names are made up.
uint32_t CSpeedscopeHandler::FrameName( std::string_view index )
{
	size_t nIndex = 0;
	const auto result = std::from_chars( index.data(), index.data() + index.size(), nIndex );
	if ( result.ec != std::errc() || result.ptr != index.data() + index.size() )
		return NO_NAME;
	if ( !m_bHasFrames )
		return m_Trace.m_Names.Intern( "frame " + std::to_string( nIndex ) );
	return nIndex < m_FrameNames.size() ? m_FrameNames[nIndex] : NO_NAME;
}

std::optional<int64_t> CSpeedscopeHandler::TimeOf( std::string_view text ) const
{
	const Profile &profile = ProfileAtHand();
	TraceEvent event;
	if ( !profile.m_bTime && m_Weight.IsGiven() )
		return m_Weight.Parse( text, MICROSECONDS, event ) ? std::optional( event.m_nDuration ) : std::nullopt;
	return ParseTime( text, profile.m_nUnit );
}

void CSpeedscopeHandler::BeginProfile()
{
	if ( !m_bEvents )
	{
		m_nProfiles++;
		return;
	}
	m_nThread = m_Trace.m_Threads.Find( "0", std::to_string( m_nProfile ) );
	m_Trace.m_Threads.Get( m_nThread ).m_Name = ProfileAtHand().m_Name;
	m_nNow = TimeOf( ProfileAtHand().m_Start ).value_or( 0 );
}

void CSpeedscopeHandler::EndProfile()
{
	if ( !m_bEvents )
		return;
	for ( uint64_t nAlone = m_Pairs.End(); nAlone > 0; nAlone-- )
		m_Trace.m_Report.Add( Repair::UnusableEvent );
	m_nProfile++;
}

void CSpeedscopeHandler::AddEvent()
{
	if ( !m_bEvents )
		return;
	if ( !m_nTime || m_nName == NO_NAME || ( m_cType != 'O' && m_cType != 'C' ) )
		return m_Trace.m_Report.Add( Repair::UnusableEvent, m_nOffset );
	TraceEvent event;
	event.m_Kind = m_cType == 'O' ? EventKind::Begin : EventKind::End;
	event.m_nTime = *m_nTime;
	event.m_nName = m_nName;
	event.m_nThread = m_nThread;
	m_Trace.Add( event, m_nOffset );
}

void CSpeedscopeHandler::AddSample()
{
	if ( !m_bEvents )
		return;
	if ( const std::optional<TraceEvent> sample = m_Pairs.AddStack( m_bGoodStack ? m_nStack : NO_NAME ) )
		EmitSample( *sample, m_nOffset );
}

void CSpeedscopeHandler::AddWeight( std::string_view text )
{
	TraceEvent event;
	event.m_Kind = EventKind::Sample;
	const Profile &profile = ProfileAtHand();
	bool bGood = false;
	if ( profile.m_bTime )
	{
		const std::optional<int64_t> nTime = ParseTime( text, profile.m_nUnit );
		bGood = nTime.has_value();
		event.m_nDuration = nTime.value_or( 0 );
	}
	else
		bGood = m_Weight.Parse( text, MICROSECONDS, event );
	event.m_nName = bGood ? 0 : NO_NAME;
	if ( const std::optional<TraceEvent> sample = m_Pairs.AddWeight( event ) )
		EmitSample( *sample, m_nWeightsOffset );
}

void CSpeedscopeHandler::EmitSample( TraceEvent sample, int64_t nOffset )
{
	if ( sample.m_nName == NO_NAME )
		return m_Trace.m_Report.Add( Repair::UnusableEvent, nOffset );
	sample.m_nThread = m_nThread;
	sample.m_nTime = m_nNow;
	m_nNow = std::min( m_nNow + std::clamp<int64_t>( sample.m_nDuration, 0, MAX_TIME ), MAX_TIME );
	m_Trace.Add( sample, nOffset );
}
} // namespace convert
