#include "server.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "clock.h"
#include "descriptorlist.h"
#include "log.h"
#include "registry.h"
#include "thread.h"
#include "threadcounters.h"
#include "token.h"
#include "wire/sessionchunks.h"

namespace showbudget
{
namespace
{
// Connections that have not introduced themselves yet. One more than that ends the oldest of them.
constexpr uint32_t MAX_WAITING = 16;
// How often frames are fetched while somebody watches. Being woken for each would cost the frame thread a system call,
// and its processor where there is no other.
constexpr auto FRAME_PAUSE = std::chrono::milliseconds( 4 );
constexpr auto ACCEPT_PAUSE = std::chrono::milliseconds( 100 );

// The recorder has its own bit and thread.
uint32_t LiveWanted()
{
	return detail::g_nWanted.load( std::memory_order_relaxed ) & WANT_LIVE;
}

void SetLiveWanted( uint32_t nWanted )
{
	uint32_t nBefore = detail::g_nWanted.load( std::memory_order_relaxed );
	while ( !detail::g_nWanted.compare_exchange_weak( nBefore, ( nBefore & ~WANT_LIVE ) | nWanted ) )
	{
	}
}
} // namespace

CServer::CServer( const Settings &settings, std::string token )
	: m_EngineName( settings.m_pName ? settings.m_pName : "" )
	, m_Token( std::move( token ) )
	, m_bCommands( settings.m_bCommands )
	, m_Address( settings.m_pAddress ? settings.m_pAddress : "" )
	, m_nPort( settings.m_nPort )
{
}

CServer::~CServer()
{
	Stop();
	if ( m_Acceptor.is_open() )
	{
		ForgetDescriptor( m_Acceptor.native_handle() );
		// A child that was forked just now may hold the descriptor a moment longer; the port is free all the same.
		shutdown( m_Acceptor.native_handle(), SHUT_RDWR );
	}
	// The descriptor outlives the server.
	if ( m_Wake.is_open() )
		m_Wake.release();
}

bool CServer::Start()
{
	if ( !Listen() )
		return false;
	std::error_code error;
	m_Wake.assign( g_Engine.m_nWakeDescriptor, error );
	if ( error )
	{
		LogLine( Severity::Error, "cannot wait for the engine: " + error.message() );
		return false;
	}
	m_Thread = StartThread( [this] { Run(); } );
	return m_Thread.joinable();
}

bool CServer::Listen()
{
	std::error_code error;
	const asio::ip::address address = asio::ip::make_address( m_Address, error );
	if ( error )
	{
		LogLine( Severity::Error, '"' + m_Address + "\" is no numeric address to listen on" );
		return false;
	}
	const asio::ip::tcp::endpoint endpoint( address, m_nPort );
	m_Acceptor.open( endpoint.protocol(), error );
	if ( !error )
		KeepDescriptor( m_Acceptor.native_handle() );
	if ( !error )
		m_Acceptor.set_option( asio::socket_base::reuse_address( true ), error );
	if ( !error )
		m_Acceptor.bind( endpoint, error );
	if ( !error )
		m_Acceptor.listen( asio::socket_base::max_listen_connections, error );
	if ( !error )
		m_nPort = m_Acceptor.local_endpoint( error ).port();
	if ( error )
	{
		LogLine( Severity::Error, "cannot listen on " + m_Address + ':' + std::to_string( m_nPort ) + ": " +
									  error.message() + "; the engine runs on without it" );
		return false;
	}
	if ( !address.is_loopback() )
		WarnOfOthers();
	return true;
}

void CServer::WarnOfOthers() const
{
	LogLine( Severity::Warning, "listening on " + m_Address + ": whoever can reach it" +
									( m_Token.empty() ? "" : " and knows the token" ) + " can watch this engine" +
									( m_bCommands ? " and run its commands" : "" ) + "; nothing is encrypted" );
}

void CServer::Stop()
{
	if ( !m_Thread.joinable() )
		return;
	asio::post( m_Context,
		[this]
		{
			SendAll(); // lines that say good-bye
			while ( !m_Connections.empty() )
				m_Connections.back()->Close( "the engine ended the session" );
			m_Strangers.TellRest();
			m_Visitors.TellRest();
			m_Context.stop();
		} );
	m_Thread.join();
}

void CServer::Run()
{
	try
	{
		g_Engine.m_Frames.Clear();
		m_nFramesLostSeen = g_Engine.m_nFramesLost.load( std::memory_order_relaxed );
		m_nTickFrequency = showbudget::TickFrequency();
		m_pMicroseconds = std::make_unique<CMicroseconds>( m_nTickFrequency );
		WaitForWork();
		AcceptNext();
		m_Context.run();
	}
	catch ( const std::exception &failure )
	{
		// Out of memory, most likely. The engine goes on without us.
		LogLine( Severity::Error, std::string( "the session ended: " ) + failure.what() );
	}
	SetLiveWanted( 0 );
	g_Engine.m_nConsoles.store( 0, std::memory_order_relaxed );
}

void CServer::AcceptNext()
{
	m_Acceptor.async_accept( [this]( const std::error_code &error, asio::ip::tcp::socket socket )
		{ OnAccepted( error, std::move( socket ) ); } );
}

void CServer::OnAccepted( const std::error_code &error, asio::ip::tcp::socket socket )
{
	if ( error == asio::error::operation_aborted )
		return;
	if ( !error )
	{
		AddConnection( std::move( socket ) );
		return AcceptNext();
	}
	// Most likely the process has no descriptor left. Asking again at once would only burn time.
	m_AcceptPause.expires_after( ACCEPT_PAUSE );
	m_AcceptPause.async_wait(
		[this]( const std::error_code &cancelled )
		{
			if ( !cancelled )
				AcceptNext();
		} );
}

void CServer::AddConnection( asio::ip::tcp::socket socket )
{
	const auto bWaits = []( const std::shared_ptr<CConnection> &pConnection ) { return !pConnection->IsAdmitted(); };
	if ( std::ranges::count_if( m_Connections, bWaits ) >= MAX_WAITING )
		( *std::ranges::find_if( m_Connections, bWaits ) )->Close( "too many others wait to introduce themselves" );
	m_Connections.push_back( std::make_shared<CConnection>( std::move( socket ), *this, *this ) );
	m_Connections.back()->Start();
}

void CServer::WaitForWork()
{
	m_Wake.async_read_some( asio::buffer( &m_nWakeCount, sizeof( m_nWakeCount ) ),
		[this]( const std::error_code &error, size_t )
		{
			if ( error )
				return;
			SendAll();
			WaitForWork();
		} );
}

void CServer::LookForFrames()
{
	m_bLooking = LiveWanted() != 0;
	if ( !m_bLooking )
		return;
	m_FrameTimer.expires_after( FRAME_PAUSE );
	m_FrameTimer.async_wait(
		[this]( const std::error_code &error )
		{
			if ( error )
				return;
			SendAll();
			LookForFrames();
		} );
}

void CServer::SendAll()
{
	WarnOnce();
	SendLines();
	SendFrames();
	// A connection that fails takes itself out of the list.
	const std::vector<std::shared_ptr<CConnection>> connections = m_Connections;
	for ( const std::shared_ptr<CConnection> &pConnection : connections )
		pConnection->Flush();
}

void CServer::SendLines()
{
	while ( const CLineQueue::Line *pLine = g_Engine.m_Lines.Peek() )
	{
		for ( const auto &pConnection : m_Connections )
			pConnection->Session().SendLine( pLine->m_Severity, { pLine->m_Text, pLine->m_nLength } );
		g_Engine.m_Lines.Pop();
	}
	if ( const uint64_t nDropped = g_Engine.m_Lines.TakeDropped() )
	{
		for ( const auto &pConnection : m_Connections )
			pConnection->Session().CountDroppedLines( nDropped );
	}
}

void CServer::SendFrames()
{
	Frame frame;
	while ( g_Engine.m_Frames.Peek( frame ) )
	{
		const SendableFrame sendable{
			frame, m_pMicroseconds->Convert( frame ), AveragedFrameRate( frame.m_Header, m_nTickFrequency ) };
		for ( const auto &pConnection : m_Connections )
			pConnection->Session().SendFrame( sendable );
		g_Engine.m_Frames.Pop();
	}

	const uint64_t nLost = g_Engine.m_nFramesLost.load( std::memory_order_relaxed );
	for ( const auto &pConnection : m_Connections )
		pConnection->Session().CountDropped( nLost - m_nFramesLostSeen );
	m_nFramesLostSeen = nLost;
}

void CServer::WarnOnce()
{
	if ( AnyBudgetOverflowed() && !std::exchange( m_bWarnedOfBudgets, true ) )
		LogLine( Severity::Warning,
			"more than " + std::to_string( MAX_BUDGETS - 1 ) + " budgets: the rest counts as \"Other\"" );
	if ( AnySiteOverflowed() && !std::exchange( m_bWarnedOfSites, true ) )
		LogLine( Severity::Warning,
			"more than " + std::to_string( MAX_SITES - 2 ) + " scopes: the rest counts as \"(more scopes)\"" );
	if ( UnmeasuredThreads() > 0 && !std::exchange( m_bWarnedOfThreads, true ) )
		LogLine( Severity::Warning,
			"more than " + std::to_string( MAX_THREADS ) + " threads: the scopes of the rest are not measured" );
}

uint32_t CServer::AdmittedConsoles() const
{
	return static_cast<uint32_t>( std::ranges::count_if(
		m_Connections, []( const std::shared_ptr<CConnection> &p ) { return p->IsAdmitted(); } ) );
}

// Versions are compared first, because what another one means by the rest is not known.
wire::Hello CServer::Answer( const wire::Hello &hello ) const
{
	wire::Hello answer{ wire::PROTOCOL_VERSION, static_cast<uint32_t>( getpid() ), m_nTickFrequency, m_EngineName };
	if ( hello.m_nProtocol != wire::PROTOCOL_VERSION )
	{
		answer.m_Refusal = "the console speaks protocol version " + std::to_string( hello.m_nProtocol ) +
						   ", this engine version " + std::to_string( wire::PROTOCOL_VERSION );
		return answer;
	}
	if ( !m_Token.empty() && !IsSameToken( m_Token, hello.m_Token ) )
	{
		answer.m_Refusal = hello.m_Token.empty() ? "token required" : "wrong token";
		return answer;
	}
	answer.m_Token = m_Token;
	if ( AdmittedConsoles() >= MAX_HOSTS )
		answer.m_Refusal = "too many consoles are connected (at most " + std::to_string( MAX_HOSTS ) + ')';
	return answer;
}

void CServer::OnAdmitted( CConsoleSession &session )
{
	g_Engine.m_nConsoles.store( AdmittedConsoles(), std::memory_order_relaxed );
	session.SetInLog( m_Visitors.Take() );
	if ( session.IsInLog() )
		LogLine( Severity::Message, session.Name() + " connected" );
}

void CServer::OnWantedChanged()
{
	uint32_t nWanted = 0;
	for ( const auto &pConnection : m_Connections )
		nWanted |= pConnection->Wanted();
	// Frames of the time before are of no use to a console that starts to watch, and those of an earlier watch neither.
	if ( LiveWanted() == 0 )
		g_Engine.m_Frames.Clear();
	SetLiveWanted( nWanted );
	if ( !m_bLooking )
		LookForFrames();
}

void CServer::OnCommand( CConsoleSession &session, std::string_view line )
{
	if ( !m_bCommands )
		session.SendLine( Severity::Warning,
			"This engine takes no commands; they are turned on with Settings::m_bCommands where it calls "
			"showbudget::Start()." );
	else if ( !g_Engine.m_Commands.Push( line.substr( 0, line.find( '\0' ) ) ) )
		session.SendLine( Severity::Warning, "The engine is busy; it did not get the command." );
}

void CServer::OnClosed( CConnection &connection, const std::string &reason )
{
	const CConsoleSession &session = connection.Session();
	if ( session.WasAdmitted() ? session.IsInLog() : m_Strangers.Take() )
		LogLine( Severity::Message, session.Name() + " left: " + reason );
	std::erase_if(
		m_Connections, [&connection]( const auto &pConnection ) { return pConnection.get() == &connection; } );
	g_Engine.m_nConsoles.store( AdmittedConsoles(), std::memory_order_relaxed );
	OnWantedChanged();
}
} // namespace showbudget
