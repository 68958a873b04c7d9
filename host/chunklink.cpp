#include "chunklink.h"

#include <QElapsedTimer>
#include <QNetworkProxy>
#include <QPointer>

#include <array>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "keel0/memalloc.h"

namespace
{
constexpr qint64 RECEIVE_BUFFER = 1 << 20; // bytes that may wait in the socket before the engine has to
constexpr size_t READ_SIZE = 256 << 10;    // bytes taken from the socket at once
constexpr qint64 SEND_LIMIT = 8 << 20;     // bytes that may wait to be sent: an engine that reads is never near it

// While nobody listens on a port that the system also hands out, an attempt may be given that very port as its own: it
// then meets itself, and would keep the engine from ever listening there again.
bool IsConnectedToItself( const QTcpSocket &socket )
{
	return socket.localPort() == socket.peerPort() && socket.localAddress() == socket.peerAddress();
}

// A connection that ends in the usual way keeps its port taken for another minute.
void LeaveAtOnce( const QTcpSocket &socket )
{
	const linger reset = { 1, 0 };
	setsockopt( static_cast<int>( socket.socketDescriptor() ), SOL_SOCKET, SO_LINGER, &reset, sizeof( reset ) );
}
} // namespace

// What may be handed over before the event loop gets its next turn: enough for the traffic of several engines at full
// speed, little enough for a display that repaints 60 times a second.
class CChunkLink::CTurnBudget
{
public:
	CTurnBudget() { m_Clock.start(); }

	void SpendChunk() { m_nChunks++; }
	void SpendBytes( size_t nBytes ) { m_nBytes += nBytes; }
	bool IsSpent() const
	{
		return m_nChunks >= 2048 || m_nBytes >= ( 4u << 20 ) || m_Clock.nsecsElapsed() >= 4'000'000;
	}

private:
	QElapsedTimer m_Clock;
	size_t m_nChunks = 0;
	size_t m_nBytes = 0;
};

CChunkLink::CChunkLink( IOwner &owner, const wire::Hello &ownHello, const Timeouts &timeouts, QObject *pParent )
	: QObject( pParent )
	, m_pOwner( &owner )
	, m_OwnHello( ownHello )
	, m_Timeouts( timeouts )
	, m_Stream( ownHello )
{
	m_Deadline.setSingleShot( true );
	m_NextTurn.setSingleShot( true );
	m_NextTurn.setInterval( 0 );
	connect( &m_Deadline, &QTimer::timeout, this, &CChunkLink::OnDeadline );
	connect( &m_NextTurn, &QTimer::timeout, this, &CChunkLink::Pump );
	m_Silence.setSingleShot( true );
	m_Silence.setInterval( timeouts.m_nSilenceMs );
	connect( &m_Silence, &QTimer::timeout, this, &CChunkLink::OnSilence );

	m_Socket.setProxy( QNetworkProxy::NoProxy );
	m_Socket.setReadBufferSize( RECEIVE_BUFFER );
	connect( &m_Socket, &QTcpSocket::connected, this, &CChunkLink::OnConnected );
	connect( &m_Socket, &QTcpSocket::disconnected, this, &CChunkLink::OnDisconnected );
	connect( &m_Socket, &QTcpSocket::errorOccurred, this, &CChunkLink::OnError );
	connect( &m_Socket, &QTcpSocket::readyRead, this, &CChunkLink::Pump );
}

CChunkLink::~CChunkLink()
{
	// The socket tells of its own end, which nobody here wants to hear any more.
	m_Socket.disconnect( this );
}

void CChunkLink::Open( const TargetAddress &address )
{
	m_Deadline.start( m_Timeouts.m_nConnectMs );
	m_Socket.connectToHost( address.m_Host, address.m_nPort );
}

bool CChunkLink::Send( const wire::ChunkHeader &header, std::span<const uint8_t> payload )
{
	const qint64 nSize = static_cast<qint64>( payload.size() );
	if ( !m_Stream.IsGreeted() || m_bPeerGone || payload.size() > wire::MAX_CHUNK_LENGTH ||
		 m_Socket.bytesToWrite() + nSize > SEND_LIMIT )
		return false;
	Write( header, payload );
	return true;
}

void CChunkLink::Write( const wire::ChunkHeader &header, std::span<const uint8_t> payload )
{
	std::array<uint8_t, wire::CHUNK_HEADER_SIZE> bytes;
	wire::WriteChunkHeader( bytes, header );
	m_Socket.write( reinterpret_cast<const char *>( bytes.data() ), static_cast<qint64>( bytes.size() ) );
	m_Socket.write( reinterpret_cast<const char *>( payload.data() ), static_cast<qint64>( payload.size() ) );
}

void CChunkLink::Close()
{
	if ( !m_pOwner )
		return;
	m_pOwner = nullptr;
	m_Deadline.stop();
	m_NextTurn.stop();
	m_Silence.stop();
	m_Socket.disconnect( this );
	m_Socket.flush();
	m_Socket.close();
	deleteLater();
}

void CChunkLink::OnConnected()
{
	if ( IsConnectedToItself( m_Socket ) )
	{
		LeaveAtOnce( m_Socket );
		End( EndKind::Lost, tr( "nobody listens there" ) );
		return;
	}
	SetLinkOptions();
	const std::vector<uint8_t> payload = wire::WriteHello( m_OwnHello );
	wire::ChunkHeader header;
	header.m_nType = wire::CHUNK_HELLO;
	header.m_nLength = static_cast<uint32_t>( payload.size() );
	Write( header, payload );
	m_Deadline.start( m_Timeouts.m_nGreetingMs );
}

// A peer whose machine or network is gone says nothing. The kernel asks it every second once it has been silent for
// two, and gives the link up when neither the questions nor what was sent is acknowledged for four.
void CChunkLink::SetLinkOptions()
{
	m_Socket.setSocketOption( QAbstractSocket::LowDelayOption, 1 );
	m_Socket.setSocketOption( QAbstractSocket::KeepAliveOption, 1 );
	const int nDescriptor = static_cast<int>( m_Socket.socketDescriptor() );
	const auto set = [nDescriptor]( int nOption, int nValue )
	{ setsockopt( nDescriptor, IPPROTO_TCP, nOption, &nValue, sizeof( nValue ) ); };
	set( TCP_KEEPIDLE, 2 );
	set( TCP_KEEPINTVL, 1 );
	set( TCP_KEEPCNT, 2 );
	set( TCP_USER_TIMEOUT, 4000 );
}

void CChunkLink::OnDeadline()
{
	const bool bConnected = m_Socket.state() == QAbstractSocket::ConnectedState;
	const double flSeconds = ( bConnected ? m_Timeouts.m_nGreetingMs : m_Timeouts.m_nConnectMs ) / 1000.0;
	End( EndKind::Lost, bConnected ? tr( "it accepted the connection but sent no 'HELO' within %1 s" ).arg( flSeconds )
								   : tr( "no answer within %1 s" ).arg( flSeconds ) );
}

// An engine is only called silent for what it does: bytes that wait because this process was busy are no silence.
void CChunkLink::OnSilence()
{
	if ( IsSomethingWaiting() )
	{
		m_Silence.start();
		return;
	}
	m_bSilent = true;
	m_pOwner->OnLinkSilent( true );
}

bool CChunkLink::IsSomethingWaiting() const
{
	int nInKernel = 0;
	const bool bAsked = ioctl( static_cast<int>( m_Socket.socketDescriptor() ), FIONREAD, &nInKernel ) == 0;
	return !m_Unread.empty() || m_Socket.bytesAvailable() > 0 || ( bAsked && nInKernel > 0 );
}

CChunkLink::Step CChunkLink::EndSilence()
{
	m_bSilent = false;
	return HandOver( [this]() { m_pOwner->OnLinkSilent( false ); } );
}

void CChunkLink::OnError()
{
	m_GoneReason =
		m_Socket.error() == QAbstractSocket::RemoteHostClosedError ? QString() : m_Socket.errorString().toLower();
	// An error after the connect is followed by disconnected(), one before it is not.
	if ( m_Socket.state() != QAbstractSocket::ConnectedState && m_Socket.state() != QAbstractSocket::ClosingState )
		OnDisconnected();
}

void CChunkLink::OnDisconnected()
{
	m_bPeerGone = true;
	Pump();
}

void CChunkLink::Pump()
{
	if ( m_bPumping || !m_pOwner )
		return;
	m_bPumping = true;
	const QPointer<CChunkLink> pSelf( this );
	CTurnBudget budget;
	Step step = Step::GoOn;
	while ( step == Step::GoOn && !budget.IsSpent() )
	{
		step = NextStep( budget );
		if ( !pSelf )
			return;
	}
	m_bPumping = false;
	if ( step == Step::GoOn )
		m_NextTurn.start();
	else if ( step == Step::NeedMore )
		FinishIfPeerGone();
}

// Bytes that were sent before the peer went away were handed over first.
void CChunkLink::FinishIfPeerGone()
{
	if ( !m_bPeerGone )
		return;
	if ( !m_GoneReason.isEmpty() )
		End( EndKind::Lost, m_GoneReason );
	else
		End( EndKind::Lost, m_Stream.IsGreeted() ? tr( "the engine closed the connection" )
												 : tr( "the peer closed the connection before it greeted" ) );
}

CChunkLink::Step CChunkLink::NextStep( CTurnBudget &budget )
{
	if ( m_Unread.empty() && !FillUnread() )
		return Step::NeedMore;
	if ( m_bSilent && EndSilence() == Step::Ended )
		return Step::Ended;
	const size_t nUnread = m_Unread.size();
	const CEngineStream::Event event = m_Stream.Feed( m_Unread );
	budget.SpendBytes( nUnread - m_Unread.size() );
	switch ( event )
	{
		case CEngineStream::Event::NeedMore:
			return Step::GoOn;
		case CEngineStream::Event::Greeted:
			m_Deadline.stop();
			m_Silence.start();
			return HandOver( [this]() { m_pOwner->OnLinkGreeted( m_Stream.PeerHello() ); } );
		case CEngineStream::Event::Chunk:
			budget.SpendChunk();
			return HandOver( [this]() { HandOverChunk(); } );
		case CEngineStream::Event::Refused:
			break;
	}
	const bool bTurnedAway = m_Stream.Why() == CEngineStream::Refusal::TurnedAway;
	End( bTurnedAway ? EndKind::TurnedAway : EndKind::Refused, m_Stream.Problem() );
	return Step::Ended;
}

// Whatever the owner does may end the link or delete it, so nothing of it is touched after such a call.
template <typename Call>
CChunkLink::Step CChunkLink::HandOver( Call call )
{
	const QPointer<CChunkLink> pSelf( this );
	call();
	return pSelf && m_pOwner ? Step::GoOn : Step::Ended;
}

void CChunkLink::HandOverChunk()
{
	const wire::ChunkHeader header = m_Stream.Header();
	m_pOwner->OnLinkChunk( header, m_Stream.TakeBlock() );
}

bool CChunkLink::FillUnread()
{
	m_ReadBuffer.resize( READ_SIZE );
	const qint64 nRead =
		m_Socket.read( reinterpret_cast<char *>( m_ReadBuffer.data() ), static_cast<qint64>( m_ReadBuffer.size() ) );
	m_Unread = { m_ReadBuffer.data(), nRead > 0 ? static_cast<size_t>( nRead ) : 0 };
	if ( nRead > 0 && m_Stream.IsGreeted() )
		m_Silence.start();
	return !m_Unread.empty();
}

void CChunkLink::End( EndKind kind, const QString &reason )
{
	IOwner *pOwner = std::exchange( m_pOwner, nullptr );
	m_Deadline.stop();
	m_NextTurn.stop();
	m_Silence.stop();
	m_Socket.disconnect( this );
	m_Socket.abort();
	deleteLater();
	pOwner->OnLinkEnded( kind, reason );
}
