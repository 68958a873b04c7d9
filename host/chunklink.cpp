#include "chunklink.h"

#include <QElapsedTimer>
#include <QNetworkProxy>
#include <QPointer>

#include <array>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "keel0/memalloc.h"

namespace
{
constexpr qint64 RECEIVE_BUFFER = 1 << 20; // bytes that may wait in the socket before the engine has to
constexpr size_t READ_SIZE = 256 << 10;    // bytes taken from the socket at once
constexpr qint64 SEND_LIMIT = 8 << 20;     // bytes that may wait to be sent: an engine that reads is never near it
constexpr uint32_t MAX_HELLO_LENGTH = 4096;

const wire::BlockAllocator g_BlockAllocator = {
	[]( size_t nBytes ) { return g_pMemAlloc->Alloc( nBytes ); },
	[]( void *pBlock ) { g_pMemAlloc->Free( pBlock ); },
};

QString Describe( uint32_t nChunkType )
{
	return QString::fromLatin1( wire::DescribeChunkType( nChunkType ).m_Text );
}

QString DescribeProblem( wire::HeaderProblem problem, const wire::ChunkHeader &header )
{
	if ( problem == wire::HeaderProblem::TooLong )
	{
		return CChunkLink::tr( "a chunk (%1) declares %2 bytes, the limit is %3" )
			.arg( Describe( header.m_nType ) )
			.arg( header.m_nLength )
			.arg( wire::MAX_CHUNK_LENGTH );
	}
	return CChunkLink::tr( "a chunk header (%1) has a reserved field that is not zero" )
		.arg( Describe( header.m_nType ) );
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
	, m_Assembler( g_BlockAllocator )
{
	m_Deadline.setSingleShot( true );
	m_NextTurn.setSingleShot( true );
	m_NextTurn.setInterval( 0 );
	connect( &m_Deadline, &QTimer::timeout, this, &CChunkLink::OnDeadline );
	connect( &m_NextTurn, &QTimer::timeout, this, &CChunkLink::Pump );

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
	if ( !m_bGreeted || m_bPeerGone || payload.size() > wire::MAX_CHUNK_LENGTH ||
		 m_Socket.bytesToWrite() + nSize > SEND_LIMIT )
		return false;
	std::array<uint8_t, wire::CHUNK_HEADER_SIZE> bytes;
	wire::WriteChunkHeader( bytes, header );
	m_Socket.write( reinterpret_cast<const char *>( bytes.data() ), static_cast<qint64>( bytes.size() ) );
	m_Socket.write( reinterpret_cast<const char *>( payload.data() ), nSize );
	return true;
}

void CChunkLink::Close()
{
	if ( !m_pOwner )
		return;
	m_pOwner = nullptr;
	m_Deadline.stop();
	m_NextTurn.stop();
	m_Socket.disconnect( this );
	m_Socket.flush();
	m_Socket.close();
	deleteLater();
}

void CChunkLink::OnConnected()
{
	SetLinkOptions();
	const std::vector<uint8_t> payload = wire::WriteHello( m_OwnHello );
	wire::ChunkHeader header;
	header.m_nType = wire::CHUNK_HELLO;
	header.m_nLength = static_cast<uint32_t>( payload.size() );
	std::array<uint8_t, wire::CHUNK_HEADER_SIZE> bytes;
	wire::WriteChunkHeader( bytes, header );
	m_Socket.write( reinterpret_cast<const char *>( bytes.data() ), static_cast<qint64>( bytes.size() ) );
	m_Socket.write( reinterpret_cast<const char *>( payload.data() ), static_cast<qint64>( payload.size() ) );
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
		End( EndKind::Lost, m_bGreeted ? tr( "the engine closed the connection" )
									   : tr( "the peer closed the connection before it greeted" ) );
}

CChunkLink::Step CChunkLink::NextStep( CTurnBudget &budget )
{
	if ( m_Unread.empty() && !FillUnread() )
		return Step::NeedMore;
	const size_t nUnread = m_Unread.size();
	const auto result = m_Assembler.Feed( m_Unread );
	budget.SpendBytes( nUnread - m_Unread.size() );
	if ( result == wire::CChunkAssembler::Result::Refused )
	{
		End( EndKind::Refused, DescribeProblem( m_Assembler.Problem(), m_Assembler.Header() ) );
		return Step::Ended;
	}
	if ( !m_bGreeted && !CheckFirstChunk() )
		return Step::Ended;
	if ( result == wire::CChunkAssembler::Result::NeedMore )
		return Step::GoOn;
	budget.SpendChunk();
	return HandOver();
}

// Whatever the owner does may end the link or delete it, so nothing of it is touched after such a call.
CChunkLink::Step CChunkLink::HandOver()
{
	const wire::ChunkHeader header = m_Assembler.Header();
	uint8_t *pBlock = m_Assembler.TakeBlock();
	if ( !m_bGreeted )
	{
		const bool bGoesOn = Greet( { pBlock + wire::CHUNK_HEADER_SIZE, header.m_nLength } );
		g_pMemAlloc->Free( pBlock );
		return bGoesOn ? Step::GoOn : Step::Ended;
	}
	const QPointer<CChunkLink> pSelf( this );
	m_pOwner->OnLinkChunk( header, pBlock );
	return pSelf && m_pOwner ? Step::GoOn : Step::Ended;
}

bool CChunkLink::FillUnread()
{
	m_ReadBuffer.resize( READ_SIZE );
	const qint64 nRead =
		m_Socket.read( reinterpret_cast<char *>( m_ReadBuffer.data() ), static_cast<qint64>( m_ReadBuffer.size() ) );
	m_Unread = { m_ReadBuffer.data(), nRead > 0 ? static_cast<size_t>( nRead ) : 0 };
	return !m_Unread.empty();
}

// Judged as soon as its header is there: a server of another kind must not be waited for.
bool CChunkLink::CheckFirstChunk()
{
	if ( m_Assembler.Pending() < wire::CHUNK_HEADER_SIZE )
		return true;
	const wire::ChunkHeader &header = m_Assembler.Header();
	if ( header.m_nType == wire::CHUNK_HELLO && header.m_nLength <= MAX_HELLO_LENGTH )
		return true;
	End( EndKind::Refused,
		header.m_nType == wire::CHUNK_HELLO
			? tr( "its 'HELO' is %1 bytes long, the limit is %2" ).arg( header.m_nLength ).arg( MAX_HELLO_LENGTH )
			: tr( "its first chunk is %1 and not 'HELO': this is no engine" ).arg( Describe( header.m_nType ) ) );
	return false;
}

bool CChunkLink::Greet( std::span<const uint8_t> payload )
{
	const std::optional<wire::Hello> hello = wire::ReadHello( payload );
	if ( !hello )
	{
		End( EndKind::Refused, tr( "its 'HELO' is too short (%1 bytes)" ).arg( payload.size() ) );
		return false;
	}
	if ( hello->m_nProtocol != m_OwnHello.m_nProtocol )
	{
		End( EndKind::Refused, tr( "it speaks protocol version %1, this console speaks version %2" )
								   .arg( hello->m_nProtocol )
								   .arg( m_OwnHello.m_nProtocol ) );
		return false;
	}
	m_Deadline.stop();
	m_bGreeted = true;
	const QPointer<CChunkLink> pSelf( this );
	m_pOwner->OnLinkGreeted( *hello );
	return pSelf && m_pOwner;
}

void CChunkLink::End( EndKind kind, const QString &reason )
{
	IOwner *pOwner = std::exchange( m_pOwner, nullptr );
	m_Deadline.stop();
	m_NextTurn.stop();
	m_Socket.disconnect( this );
	m_Socket.abort();
	deleteLater();
	pOwner->OnLinkEnded( kind, reason );
}
