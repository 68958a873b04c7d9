#include "connection.h"

#include <netinet/tcp.h>
#include <sys/socket.h>

#include <utility>

#include "descriptorlist.h"

namespace showbudget
{
namespace
{
using State = CConsoleSession::State;

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

CConnection::CConnection( asio::ip::tcp::socket socket, ISessionOwner &sessionOwner, IConnectionOwner &owner )
	: m_Socket( std::move( socket ) )
	, m_Deadline( m_Socket.get_executor() )
	, m_WatchTimer( m_Socket.get_executor() )
	, m_Owner( owner )
	, m_Session( DescribePeer( m_Socket ), sessionOwner )
{
}

void CConnection::Start()
{
	SetSocketOptions();
	StartDeadline( g_Times.m_Greeting, "it did not introduce itself in time" );
	Read();
}

// A frame must not wait for the next one. A peer that is gone without a word is noticed after a few seconds: by
// keep-alive while there is nothing to send, by Watch() otherwise. TCP_USER_TIMEOUT would do that, too, but it also
// ends a connection whose console is there and has not read for that long, as one does that is stopped in a debugger.
void CConnection::SetSocketOptions()
{
	const int nSocket = m_Socket.native_handle();
	KeepDescriptor( nSocket );
	SetOption( nSocket, IPPROTO_TCP, TCP_NODELAY, 1 );
	SetOption( nSocket, SOL_SOCKET, SO_KEEPALIVE, 1 );
	SetOption( nSocket, IPPROTO_TCP, TCP_KEEPIDLE, 2 );
	SetOption( nSocket, IPPROTO_TCP, TCP_KEEPINTVL, 1 );
	SetOption( nSocket, IPPROTO_TCP, TCP_KEEPCNT, 2 );
}

void CConnection::StartDeadline( std::chrono::milliseconds time, std::string reason )
{
	m_Deadline.expires_after( time );
	m_Deadline.async_wait(
		[self = shared_from_this(), reason = std::move( reason )]( const std::error_code &error )
		{
			if ( !error && !self->IsAdmitted() )
				self->Close( reason );
		} );
}

void CConnection::Close( const std::string &reason )
{
	if ( m_bClosed )
		return;
	const auto self = shared_from_this(); // the owner lets go of it
	m_bClosed = true;
	std::error_code ignored;
	ForgetDescriptor( m_Socket.native_handle() );
	m_Deadline.cancel();
	m_WatchTimer.cancel();
	m_Socket.shutdown( asio::ip::tcp::socket::shutdown_both, ignored );
	m_Socket.close( ignored );
	m_Owner.OnClosed( *this, reason );
}

void CConnection::Read()
{
	m_Socket.async_read_some( asio::buffer( m_Received ),
		[self = shared_from_this()]( const std::error_code &error, size_t nBytes )
		{
			if ( self->m_bClosed )
				return;
			if ( error )
				self->OnSocketError();
			else
				self->OnRead( std::span( self->m_Received ).first( nBytes ) );
		} );
}

void CConnection::OnRead( std::span<const uint8_t> bytes )
{
	const State before = m_Session.GetState();
	m_Session.OnBytes( bytes );
	const State state = m_Session.GetState();
	if ( state == State::Over )
		return Close( m_Session.EndReason() );
	if ( state != before && state == State::Open )
	{
		m_Deadline.cancel();
		m_LastSent = Clock::now();
		Watch();
	}
	if ( state != before && state == State::Refused )
		StartDeadline( g_Times.m_Ending, m_Session.EndReason() );
	Flush();
	if ( !m_bClosed )
		Read();
}

// The stream has ended or broken; a refused console has hung up as it should.
void CConnection::OnSocketError()
{
	Close( m_Session.GetState() == State::Refused ? m_Session.EndReason() : "it hung up" );
}

void CConnection::Flush()
{
	if ( m_bClosed || !m_Session.TakeQueued( m_Sending ) )
		return;
	m_LastSent = Clock::now();
	asio::async_write( m_Socket, asio::buffer( m_Sending ),
		[self = shared_from_this()]( const std::error_code &error, size_t ) { self->OnWritten( error ); } );
}

void CConnection::OnWritten( const std::error_code &error )
{
	if ( m_bClosed )
		return;
	if ( error )
		return OnSocketError();
	m_Session.OnSent();
	Flush();
	if ( m_Session.GetState() == State::Refused && !m_Session.IsUnderWay() )
	{
		// Closing now could throw away what the peer has not read yet; its end of the stream follows this one.
		std::error_code ignored;
		m_Socket.shutdown( asio::ip::tcp::socket::shutdown_send, ignored );
	}
}

// Looks after the connection once it has been quiet for a beat, and at least that often.
void CConnection::Watch()
{
	const Clock::time_point now = Clock::now();
	const Clock::time_point quiet = m_LastSent + g_Times.m_Beat;
	m_WatchTimer.expires_at( quiet > now ? quiet : now + g_Times.m_Beat );
	m_WatchTimer.async_wait(
		[self = shared_from_this()]( const std::error_code &error )
		{
			if ( error || self->m_bClosed )
				return;
			if ( self->IsPeerGone() )
				return self->Close( "its machine does not answer any more" );
			if ( Clock::now() - self->m_LastSent >= g_Times.m_Beat && !self->m_Session.IsUnderWay() )
			{
				self->m_Session.SendBeat();
				self->Flush();
			}
			self->Watch();
		} );
}

// A machine that is there acknowledges what it is sent at once, and answers the question whether it can take more.
bool CConnection::IsPeerGone()
{
	constexpr int UNANSWERED = 2; // tries in a row
	tcp_info info{};
	socklen_t nSize = sizeof( info );
	if ( getsockopt( m_Socket.native_handle(), IPPROTO_TCP, TCP_INFO, &info, &nSize ) != 0 )
		return false;
	const bool bTrying = info.tcpi_retransmits >= UNANSWERED || info.tcpi_probes >= UNANSWERED;
	return bTrying && std::chrono::milliseconds( info.tcpi_last_ack_recv ) >= g_Times.m_Unanswered;
}
} // namespace showbudget
