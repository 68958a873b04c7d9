#include "consolesession.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "framecollector.h"
#include "registry.h"
#include "wire/controlchunks.h"
#include "wire/plaintext.h"

namespace showbudget
{
namespace
{
// A console sends small chunks only; what announces more is none.
constexpr uint32_t MAX_GREETING_LENGTH = 4096;
constexpr uint32_t MAX_INCOMING_LENGTH = 1u << 20;

constexpr size_t MAX_QUEUED_BYTES = 1u << 20;
constexpr size_t MAX_QUEUED_LINE_BYTES = MAX_QUEUED_BYTES + ( 256u << 10 ); // lines may use a little more
constexpr size_t MAX_NAME_BYTES = 64u << 10; // in one frame; the rest comes with the next
constexpr uint8_t CONSOLE_HISTORY = 128;     // samples that a console keeps of each site

std::string Format( const char *pFormat, auto... arguments )
{
	char text[96];
	std::snprintf( text, sizeof( text ), pFormat, arguments... );
	return text;
}
} // namespace

CConsoleSession::CConsoleSession( std::string address, ISessionOwner &owner )
	: m_Owner( owner )
	, m_Name( std::move( address ) )
	, m_Incoming( { std::malloc, std::free } )
{
}

void CConsoleSession::End( State state, std::string reason )
{
	m_State = state;
	m_EndReason = std::move( reason );
	SetWanted( 0 );
}

void CConsoleSession::OnBytes( std::span<const uint8_t> bytes )
{
	while ( TakesChunks() )
	{
		const wire::CChunkAssembler::Result result = m_Incoming.Feed( bytes );
		const bool bWhole = result == wire::CChunkAssembler::Result::Chunk;
		std::unique_ptr<uint8_t, decltype( &std::free )> pBlock( bWhole ? m_Incoming.TakeBlock() : nullptr, std::free );
		if ( result == wire::CChunkAssembler::Result::Refused || bWhole ||
			 m_Incoming.Pending() >= wire::CHUNK_HEADER_SIZE )
			OnHeader();
		if ( !bWhole )
			return;
		if ( TakesChunks() )
			OnChunk( { pBlock.get() + wire::CHUNK_HEADER_SIZE, m_Incoming.Header().m_nLength } );
	}
}

// Judges the header as soon as it is there: what follows need not even come.
void CConsoleSession::OnHeader()
{
	const wire::ChunkHeader &header = m_Incoming.Header();
	const wire::HeaderProblem problem = m_Incoming.Problem();
	const bool bGreeting = m_State == State::Greeting;
	if ( problem == wire::HeaderProblem::ReservedNotZero || ( bGreeting && header.m_nType != wire::CHUNK_HELLO ) )
		return End( State::Over, "it does not speak this protocol" );
	if ( problem == wire::HeaderProblem::NoMemory )
		return End( State::Over, "there is no memory for what it sends" );
	if ( header.m_nLength > ( bGreeting ? MAX_GREETING_LENGTH : MAX_INCOMING_LENGTH ) )
		return End( State::Over, Format( "it announced a chunk '%s' of %u bytes",
									 wire::DescribeChunkType( header.m_nType ).m_Text, header.m_nLength ) );
	if ( header.m_nVersion != wire::CHUNK_VERSION )
		End( State::Over, Format( "its chunks are version %u, this engine's %u", unsigned{ header.m_nVersion },
							  unsigned{ wire::CHUNK_VERSION } ) );
}

void CConsoleSession::OnChunk( std::span<const uint8_t> payload )
{
	if ( m_State == State::Greeting )
		return OnHello( payload );
	switch ( m_Incoming.Header().m_nType )
	{
		case wire::CHUNK_SAMPLING:
			return OnSampling( payload );
		case wire::CHUNK_MINIPROFILER_CONTROL:
			return OnScopesWanted( payload );
		case wire::CHUNK_MINIPROFILER_NAMES:
			return OnNamesWanted( payload );
		case wire::CHUNK_COMMAND:
			if ( payload.size() > wire::MAX_COMMAND_TEXT )
				return End( State::Over, "its command is too long" );
			return m_Owner.OnCommand( *this, { reinterpret_cast<const char *>( payload.data() ), payload.size() } );
		default:
			return; // a later version may ask for more
	}
}

void CConsoleSession::OnHello( std::span<const uint8_t> payload )
{
	const std::optional<wire::Hello> hello = wire::ReadHello( payload );
	if ( !hello )
		return End( State::Over, "its greeting is too short" );
	if ( !hello->m_Name.empty() )
		m_Name += " (" + wire::ToPlainLine( hello->m_Name ) + ')';
	// From here on it is a console, if maybe one that is not let in: it learns who it talked to in any case.
	const wire::Hello answer = m_Owner.Answer( *hello );
	AppendChunk( m_Queued, wire::CHUNK_HELLO, wire::WriteHello( answer ) );
	if ( !answer.m_Refusal.empty() )
		return End( State::Refused, "refused: " + answer.m_Refusal );
	m_State = State::Open;
	m_bAdmitted = true;
	m_Owner.OnAdmitted( *this );
}

void CConsoleSession::OnSampling( std::span<const uint8_t> payload )
{
	const std::optional<wire::SamplingRequest> request = wire::ReadSamplingRequest( payload );
	if ( !request )
		return End( State::Over, "its sampling request is too short" );
	if ( request->m_bStart )
	{
		m_nBudgetsAnnounced = 0;
		m_bTickLost = true;
		// A console that asks again and again without reading gets them with the next frame that it has room for.
		if ( HasRoom() )
			AnnounceBudgets( BudgetCount() );
	}
	SetWanted( request->m_bStart ? m_nWanted | WANT_BUDGETS : m_nWanted & ~WANT_BUDGETS );
}

void CConsoleSession::OnScopesWanted( std::span<const uint8_t> payload )
{
	const std::optional<bool> bWanted = wire::ReadMiniProfilerControl( payload );
	if ( !bWanted )
		return End( State::Over, "its mini-profiler request is too short" );
	// The console may not have taken the last samples, so it gets all the zeros again.
	for ( uint8_t &nZeros : m_ZerosSent )
		nZeros = nZeros > 0;
	SetWanted( *bWanted ? m_nWanted | WANT_SCOPES : m_nWanted & ~WANT_SCOPES );
	SendNamesAlone(); // those that waited for a frame that will not come
}

void CConsoleSession::OnNamesWanted( std::span<const uint8_t> payload )
{
	const size_t nCount = wire::NameRequestCount( payload );
	for ( size_t i = 0; i < nCount; i++ )
	{
		const uint32_t nSite = SiteOfId( wire::ReadNameRequest( payload, i ) );
		if ( nSite == SITE_NONE || !GetSite( nSite ).m_bReady.load( std::memory_order_acquire ) ||
			 m_NameWanted.test( nSite ) )
			continue;
		m_NameWanted.set( nSite );
		m_NamesWanted.push_back( nSite );
	}
	SendNamesAlone();
}

// Names travel with the next frame's scopes. While there are none, they go by themselves.
void CConsoleSession::SendNamesAlone()
{
	while ( !( m_nWanted & WANT_SCOPES ) && !m_NamesWanted.empty() && HasRoom() )
	{
		CMiniProfilerWriter writer( m_Queued, 0 );
		AppendNames( writer );
		writer.Finish();
	}
}

void CConsoleSession::SetWanted( uint32_t nWanted )
{
	if ( nWanted == m_nWanted )
		return;
	m_nWanted = nWanted;
	m_Owner.OnWantedChanged();
}

void CConsoleSession::AnnounceBudgets( uint32_t nBudgets )
{
	if ( nBudgets == m_nBudgetsAnnounced )
		return;
	AppendCategories( m_Queued, nBudgets );
	m_nBudgetsAnnounced = nBudgets;
}

void CConsoleSession::SendLine( Severity severity, std::string_view text )
{
	if ( m_State != State::Open )
		return;
	if ( m_Queued.size() + m_nUnderWay > MAX_QUEUED_LINE_BYTES )
		m_nLinesDropped++;
	else
		AppendLine( severity, text );
}

void CConsoleSession::AppendLine( Severity severity, std::string_view text )
{
	std::string line( text );
	if ( line.empty() || line.back() != '\n' )
		line += '\n';
	AppendChunk( m_Queued, wire::CHUNK_PRINT, wire::WritePrint( static_cast<wire::PrintSeverity>( severity ), line ) );
}

bool CConsoleSession::HasRoom() const
{
	return m_Queued.size() + m_nUnderWay < MAX_QUEUED_BYTES;
}

void CConsoleSession::CountDropped( uint64_t nFrames )
{
	if ( m_nWanted != 0 )
		m_nDropped += nFrames;
}

void CConsoleSession::CountDroppedLines( uint64_t nLines )
{
	if ( m_State != State::Open )
		return;
	m_nLinesDropped += nLines;
	if ( HasRoom() )
		ReportDropped();
}

// Tells what was dropped since the last time.
void CConsoleSession::ReportDropped()
{
	if ( const uint64_t nLines = std::exchange( m_nLinesDropped, 0 ) )
		AppendLine( Severity::Warning, std::to_string( nLines ) + " lines came too fast and were dropped." );
	if ( m_nDropped == m_nDroppedReported )
		return;
	AppendChunk( m_Queued, wire::CHUNK_DROPPED, wire::WriteDropped( m_nDropped ) );
	m_nDroppedReported = m_nDropped;
}

void CConsoleSession::SendFrame( const SendableFrame &frame )
{
	if ( m_nWanted == 0 )
		return;
	const FrameHeader &header = frame.m_Frame.m_Header;
	if ( !HasRoom() )
	{
		m_nDropped++;
		m_bTickLost = m_bTickLost || header.m_bNewTick;
		return;
	}
	ReportDropped();
	if ( m_nWanted & WANT_BUDGETS )
	{
		AnnounceBudgets( header.m_nBudgets );
		AppendSample( m_Queued, !header.m_bNewTick && !m_bTickLost, frame.m_flFrameRate, frame.m_Values );
		m_bTickLost = false;
	}
	if ( ( m_nWanted & WANT_SCOPES ) && header.m_bEntries )
		AppendScopes( frame );
}

void CConsoleSession::AppendScopes( const SendableFrame &frame )
{
	const FrameHeader &header = frame.m_Frame.m_Header;
	CMiniProfilerWriter writer( m_Queued, header.m_nServiceTicks );
	writer.BeginData( header.m_nSites - 1 );
	for ( const FrameEntry &entry : frame.m_Frame.m_Entries )
	{
		writer.AddEntry( entry );
		m_InFrame[entry.m_nSite] = true;
		m_ZerosSent[entry.m_nSite] = 1; // 0 is for sites that this console never saw
	}
	for ( uint32_t nSite = SITE_NONE + 1; nSite < MAX_SITES; nSite++ )
	{
		const bool bSent = std::exchange( m_InFrame[nSite], false );
		if ( bSent || m_ZerosSent[nSite] == 0 || m_ZerosSent[nSite] > CONSOLE_HISTORY )
			continue;
		m_ZerosSent[nSite]++;
		writer.AddEntry( { nSite, SITE_NONE, 0, 0 } );
	}
	writer.EndData();
	if ( !m_NamesWanted.empty() )
		AppendNames( writer );
	writer.Finish();
}

void CConsoleSession::AppendNames( CMiniProfilerWriter &writer )
{
	writer.BeginNames( m_Owner.TickFrequency() );
	size_t nDone = 0;
	const size_t nLimit = writer.Size() + MAX_NAME_BYTES;
	while ( nDone < m_NamesWanted.size() && writer.Size() < nLimit )
	{
		const uint32_t nSite = m_NamesWanted[nDone++];
		writer.AddName( nSite );
		m_NameWanted.reset( nSite );
	}
	m_NamesWanted.erase( m_NamesWanted.begin(), m_NamesWanted.begin() + static_cast<ptrdiff_t>( nDone ) );
	writer.EndNames();
}

void CConsoleSession::SendBeat()
{
	if ( m_State == State::Open )
		AppendChunk( m_Queued, wire::CHUNK_BEAT, {} );
}

bool CConsoleSession::TakeQueued( Bytes &out )
{
	if ( IsUnderWay() || m_Queued.empty() )
		return false;
	out.clear();
	out.swap( m_Queued );
	m_nUnderWay = out.size();
	return true;
}

void CConsoleSession::OnSent()
{
	m_nUnderWay = 0;
	if ( m_State != State::Open )
		return;
	ReportDropped();
	SendNamesAlone();
}
} // namespace showbudget
