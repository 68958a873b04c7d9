#include "connection.h"

#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cstdio>
#include <utility>

#include "descriptorlist.h"
#include "framecollector.h"
#include "registry.h"
#include "wire/controlchunks.h"
#include "wire/sessionchunks.h"

namespace showbudget
{
namespace
{
// A console sends small chunks only; what announces more is none.
constexpr uint32_t MAX_GREETING_LENGTH = 4096;
constexpr uint32_t MAX_INCOMING_LENGTH = 1u << 20;
constexpr auto ENDING_TIME = std::chrono::seconds( 1 );

constexpr size_t MAX_QUEUED_BYTES = 1u << 20;
constexpr size_t MAX_QUEUED_LINE_BYTES = MAX_QUEUED_BYTES + ( 256u << 10 ); // lines may use a little more
constexpr size_t MAX_NAME_BYTES = 64u << 10; // in one frame; the rest comes with the next
constexpr uint8_t CONSOLE_HISTORY = 128;     // samples that a console keeps of each site

std::string DescribePeer( const asio::ip::tcp::socket &socket )
{
	std::error_code error;
	const asio::ip::tcp::endpoint peer = socket.remote_endpoint( error );
	return error ? "a console" : "console at " + peer.address().to_string() + ':' + std::to_string( peer.port() );
}

void SetOption( int nSocket, int nLevel, int nName, int nValue )
{
	setsockopt( nSocket, nLevel, nName, &nValue, sizeof( nValue ) );
}
} // namespace

CConnection::CConnection( asio::ip::tcp::socket socket, IConnectionOwner &owner )
	: m_Socket( std::move( socket ) )
	, m_Deadline( m_Socket.get_executor() )
	, m_Owner( owner )
	, m_Name( DescribePeer( m_Socket ) )
{
}

void CConnection::Start()
{
	SetSocketOptions();
	m_Deadline.expires_after( g_GreetingTime );
	StartDeadline( "it did not introduce itself in time" );
	ReadHeader();
}

void CConnection::SetSocketOptions()
{
	// A frame must not wait for the next one. A peer that is gone without a word is noticed after a few seconds.
	const int nSocket = m_Socket.native_handle();
	KeepDescriptor( nSocket );
	SetOption( nSocket, IPPROTO_TCP, TCP_NODELAY, 1 );
	SetOption( nSocket, SOL_SOCKET, SO_KEEPALIVE, 1 );
	SetOption( nSocket, IPPROTO_TCP, TCP_KEEPIDLE, 2 );
	SetOption( nSocket, IPPROTO_TCP, TCP_KEEPINTVL, 1 );
	SetOption( nSocket, IPPROTO_TCP, TCP_KEEPCNT, 3 );
}

void CConnection::StartDeadline( const char *pReason )
{
	m_Deadline.async_wait(
		[self = shared_from_this(), pReason]( const std::error_code &error )
		{
			if ( !error && self->m_State != State::Open )
				self->Close( self->m_EndReason.empty() ? pReason : self->m_EndReason.c_str() );
		} );
}

void CConnection::Close( const char *pReason )
{
	if ( m_State == State::Closed )
		return;
	const auto self = shared_from_this(); // the owner lets go of it
	m_State = State::Closed;
	m_nWanted = 0;
	std::error_code ignored;
	ForgetDescriptor( m_Socket.native_handle() );
	m_Deadline.cancel();
	m_Socket.shutdown( asio::ip::tcp::socket::shutdown_both, ignored );
	m_Socket.close( ignored );
	m_Owner.OnClosed( *this, pReason );
}

void CConnection::CloseAfterSending( std::string reason )
{
	if ( m_State == State::Closed || m_State == State::Ending )
		return;
	m_State = State::Ending;
	m_EndReason = std::move( reason );
	m_Deadline.expires_after( ENDING_TIME );
	StartDeadline( "" );
	Flush();
}

void CConnection::ReadHeader()
{
	asio::async_read( m_Socket, asio::buffer( m_HeaderBytes ),
		[self = shared_from_this()]( const std::error_code &error, size_t )
		{
			if ( self->m_State == State::Closed )
				return;
			if ( error )
				self->Close( self->m_State == State::Ending ? self->m_EndReason.c_str() : "it hung up" );
			else
				self->ReadPayload();
		} );
}

void CConnection::ReadPayload()
{
	const wire::HeaderProblem problem = wire::ReadChunkHeader( m_HeaderBytes, m_Header );
	const bool bGreeting = m_State == State::Greeting;
	if ( problem == wire::HeaderProblem::ReservedNotZero || ( bGreeting && m_Header.m_nType != wire::CHUNK_HELLO ) )
		return Close( "it does not speak this protocol" );
	if ( problem != wire::HeaderProblem::None ||
		 m_Header.m_nLength > ( bGreeting ? MAX_GREETING_LENGTH : MAX_INCOMING_LENGTH ) )
	{
		char reason[96];
		std::snprintf( reason, sizeof( reason ), "it announced a chunk '%s' of %u bytes",
			wire::DescribeChunkType( m_Header.m_nType ).m_Text, m_Header.m_nLength );
		return Close( reason );
	}
	m_Payload.resize( m_Header.m_nLength );
	asio::async_read( m_Socket, asio::buffer( m_Payload ),
		[self = shared_from_this()]( const std::error_code &error, size_t )
		{
			if ( self->m_State == State::Closed )
				return;
			if ( error )
				return self->Close( self->m_State == State::Ending ? self->m_EndReason.c_str() : "it hung up" );
			self->OnChunk( self->m_Payload );
			self->Flush();
			if ( self->m_State != State::Closed )
				self->ReadHeader();
		} );
}

void CConnection::OnChunk( std::span<const uint8_t> payload )
{
	if ( m_State == State::Ending )
		return;
	if ( m_Header.m_nVersion != wire::CHUNK_VERSION )
	{
		char reason[96];
		std::snprintf( reason, sizeof( reason ), "its chunks are version %u, this engine's %u",
			unsigned{ m_Header.m_nVersion }, unsigned{ wire::CHUNK_VERSION } );
		return Close( reason );
	}
	if ( m_State == State::Greeting )
		return OnHello( payload );
	switch ( m_Header.m_nType )
	{
		case wire::CHUNK_SAMPLING:
			return OnSampling( payload );
		case wire::CHUNK_MINIPROFILER_CONTROL:
			return OnScopesWanted( payload );
		case wire::CHUNK_MINIPROFILER_NAMES:
			return OnNamesWanted( payload );
		case wire::CHUNK_COMMAND:
			if ( payload.size() > wire::MAX_COMMAND_TEXT )
				return Close( "its command is too long" );
			return m_Owner.OnCommand( *this, { reinterpret_cast<const char *>( payload.data() ), payload.size() } );
		default:
			return; // a later version may ask for more
	}
}

void CConnection::OnHello( std::span<const uint8_t> payload )
{
	const std::optional<wire::Hello> hello = wire::ReadHello( payload );
	if ( !hello )
		return Close( "its greeting is too short" );
	// From here on it is a console, if maybe one of another age: it learns who it talked to in any case.
	AppendChunk( m_Queued, wire::CHUNK_HELLO, m_Owner.Greeting() );
	if ( hello->m_nProtocol != wire::PROTOCOL_VERSION )
	{
		return CloseAfterSending( "it speaks protocol version " + std::to_string( hello->m_nProtocol ) +
								  ", this engine version " + std::to_string( wire::PROTOCOL_VERSION ) );
	}
	if ( !hello->m_Name.empty() )
		m_Name += " (" + hello->m_Name + ')';
	m_State = State::Open;
	m_Deadline.cancel();
	if ( !m_Owner.AdmitConsole( *this ) )
	{
		const std::string reason = "too many consoles are connected (at most " + std::to_string( MAX_HOSTS ) + ')';
		SendLine( Severity::Error, "Refused: " + reason + "." );
		CloseAfterSending( reason );
	}
}

void CConnection::OnSampling( std::span<const uint8_t> payload )
{
	const std::optional<wire::SamplingRequest> request = wire::ReadSamplingRequest( payload );
	if ( !request )
		return Close( "its sampling request is too short" );
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

void CConnection::OnScopesWanted( std::span<const uint8_t> payload )
{
	const std::optional<bool> bWanted = wire::ReadMiniProfilerControl( payload );
	if ( !bWanted )
		return Close( "its mini-profiler request is too short" );
	// The console may not have taken the last samples, so it gets all the zeros again.
	for ( uint8_t &nZeros : m_ZerosSent )
		nZeros = nZeros > 0;
	SetWanted( *bWanted ? m_nWanted | WANT_SCOPES : m_nWanted & ~WANT_SCOPES );
}

void CConnection::OnNamesWanted( std::span<const uint8_t> payload )
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
void CConnection::SendNamesAlone()
{
	while ( !( m_nWanted & WANT_SCOPES ) && !m_NamesWanted.empty() && HasRoom() )
	{
		CMiniProfilerWriter writer( m_Queued, 0 );
		AppendNames( writer );
		writer.Finish();
	}
}

void CConnection::SetWanted( uint32_t nWanted )
{
	if ( nWanted == m_nWanted )
		return;
	m_nWanted = nWanted;
	m_Owner.OnWantedChanged();
}

void CConnection::AnnounceBudgets( uint32_t nBudgets )
{
	if ( nBudgets == m_nBudgetsAnnounced )
		return;
	AppendCategories( m_Queued, nBudgets );
	m_nBudgetsAnnounced = nBudgets;
}

void CConnection::SendLine( Severity severity, std::string_view text )
{
	if ( m_State != State::Open || m_Queued.size() + m_Sending.size() > MAX_QUEUED_LINE_BYTES )
		return;
	std::string line( text );
	if ( line.empty() || line.back() != '\n' )
		line += '\n';
	AppendChunk( m_Queued, wire::CHUNK_PRINT, wire::WritePrint( static_cast<wire::PrintSeverity>( severity ), line ) );
}

bool CConnection::HasRoom() const
{
	return m_Queued.size() + ( m_bWriting ? m_Sending.size() : 0 ) < MAX_QUEUED_BYTES;
}

void CConnection::CountDropped( uint64_t nFrames )
{
	if ( m_nWanted != 0 )
		m_nDropped += nFrames;
}

void CConnection::ReportDropped()
{
	if ( m_nDropped == m_nDroppedReported )
		return;
	AppendChunk( m_Queued, wire::CHUNK_DROPPED, wire::WriteDropped( m_nDropped ) );
	m_nDroppedReported = m_nDropped;
}

void CConnection::SendFrame( const SendableFrame &frame )
{
	if ( m_State != State::Open || m_nWanted == 0 )
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

void CConnection::AppendScopes( const SendableFrame &frame )
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

void CConnection::AppendNames( CMiniProfilerWriter &writer )
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

void CConnection::Flush()
{
	if ( m_State == State::Closed || m_bWriting || m_Queued.empty() )
		return;
	m_Sending.clear();
	m_Sending.swap( m_Queued );
	m_bWriting = true;
	asio::async_write( m_Socket, asio::buffer( m_Sending ),
		[self = shared_from_this()]( const std::error_code &error, size_t ) { self->OnWritten( error ); } );
}

void CConnection::OnWritten( const std::error_code &error )
{
	m_bWriting = false;
	if ( m_State == State::Closed )
		return;
	if ( error )
		return Close( m_State == State::Ending ? m_EndReason.c_str() : "it hung up" );
	if ( m_State == State::Open )
	{
		ReportDropped();
		SendNamesAlone();
	}
	if ( !m_Queued.empty() )
		return Flush();
	if ( m_State == State::Ending )
	{
		// Closing now could throw away what the peer has not read yet; its end of the stream follows this one.
		std::error_code ignored;
		m_Socket.shutdown( asio::ip::tcp::socket::shutdown_send, ignored );
	}
}
} // namespace showbudget
