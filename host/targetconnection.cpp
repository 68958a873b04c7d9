#include "targetconnection.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSysInfo>

#include "displaytext.h"
#include "keel0/memalloc.h"
#include "keel0/platform.h"
#include "tessel/itesseldatareceived.h"

namespace
{
// A session that lasted this long (seconds) shows that the engine is well, and a later loss is retried without delay.
constexpr double PROVEN_AFTER = 2.0;

wire::Hello OwnHello( const std::string &token )
{
	wire::Hello hello;
	hello.m_nProcessId = static_cast<uint32_t>( QCoreApplication::applicationPid() );
	hello.m_Name = QSysInfo::machineHostName().toStdString();
	hello.m_Token = token;
	return hello;
}

LoggingSeverity ToSeverity( wire::PrintSeverity severity )
{
	switch ( severity )
	{
		case wire::PrintSeverity::Warning:
			return LoggingSeverity::Warning;
		case wire::PrintSeverity::Error:
			return LoggingSeverity::Error;
		case wire::PrintSeverity::Message:
			break;
	}
	return LoggingSeverity::Message;
}

// Of a text that is too long, a front that does not end inside a character.
size_t LengthToShow( std::string_view text )
{
	size_t nLength = std::min( text.size(), wire::MAX_PRINT_TEXT );
	for ( int i = 0; i < 3 && nLength < text.size() && ( static_cast<uint8_t>( text[nLength] ) & 0xC0 ) == 0x80; i++ )
		nLength--;
	return nLength;
}
} // namespace

CTargetConnection::CTargetConnection( const TargetAddress &address, QObject *pParent )
	: QObject( pParent )
	, m_Address( address )
	, m_Name( address.ToString().toStdString() )
{
	m_RetryTimer.setSingleShot( true );
	m_RetryTimer.setTimerType( Qt::PreciseTimer );
	connect( &m_RetryTimer, &QTimer::timeout, this, &CTargetConnection::Attempt );
}

CTargetConnection::~CTargetConnection()
{
	if ( m_pLink )
		m_pLink->Close();
}

const char *CTargetConnection::GetName() const
{
	return m_Name.c_str();
}

QString CTargetConnection::Name() const
{
	return QString::fromStdString( m_Name );
}

void CTargetConnection::RegisterReceiver( uint32_t nChunkType, uint16_t nVersion, ITesselDataReceived *pReceiver )
{
	m_Receivers[{ nChunkType, nVersion }] = pReceiver;
}

int CTargetConnection::GetState() const
{
	return m_State;
}

bool CTargetConnection::SendChunk( uint32_t nChunkType, uint16_t nVersion, uint32_t nLength, uint8_t *pBuffer )
{
	wire::ChunkHeader header;
	header.m_nType = nChunkType;
	header.m_nVersion = nVersion;
	header.m_nLength = nLength;
	const bool bSent = IsConnected() && m_pLink && m_pLink->Send( header, { pBuffer, nLength } );
	if ( bSent && nChunkType == wire::CHUNK_SAMPLING && nLength > 0 )
	{
		m_bSamplingWanted = pBuffer[0] != 0;
		m_bSampling = false;
	}
	g_pMemAlloc->Free( pBuffer );
	return bSent;
}

void CTargetConnection::Connect()
{
	if ( m_State == Connecting || m_State == Connected )
		return;
	m_Delay.Reset();
	m_Problem.clear();
	Attempt();
}

void CTargetConnection::Disconnect()
{
	m_RetryTimer.stop();
	if ( m_pLink )
		std::exchange( m_pLink, nullptr )->Close();
	m_Problem.clear();
	m_nProcessId = 0;
	m_bStalled = false;
	const bool bWasConnected = IsConnected();
	SetState( Idle );
	if ( bWasConnected )
		emit Reported( LoggingSeverity::Message, tr( "disconnected" ) );
}

void CTargetConnection::StopDelivery()
{
	m_bDeliveryStopped = true;
	m_Receivers.clear();
}

void CTargetConnection::MeasureTraffic()
{
	m_Traffic.Measure( Plat_FloatTime() );
}

void CTargetConnection::Attempt()
{
	m_RetryTimer.stop();
	if ( IsDelivering() )
	{
		// A receiver is still busy with a chunk of the link before: a new link would hand over the next one meanwhile.
		m_RetryTimer.start( CReconnectDelay::FIRST_AFTER_LOSS );
		SetState( Waiting );
		return;
	}
	m_pLink = new CChunkLink( *this, OwnHello( m_Token ), m_Timeouts, this );
	SetState( Connecting );
	// Whoever heard of the new state may have disconnected already.
	if ( m_State == Connecting && m_pLink )
		m_pLink->Open( m_Address );
}

void CTargetConnection::OnLinkGreeted( const wire::Hello &hello )
{
	const QString name = ToDisplayLine( QString::fromStdString( hello.m_Name ).trimmed(), 80 );
	m_Name = ( name.isEmpty() ? m_Address.ToString() : name ).toStdString();
	m_nProcessId = hello.m_nProcessId;
	m_nDroppedFrames = 0;
	m_bForeignVersionNoted = false;
	m_bBeats = false;
	m_bSamplingWanted = false;
	m_bSampling = false;
	m_flConnectedAt = Plat_FloatTime();
	m_Traffic.Restart( m_flConnectedAt );
	m_Problem.clear();
	emit Reported(
		LoggingSeverity::Message, tr( "connected to %1 (process %2)" ).arg( Name(), QString::number( m_nProcessId ) ) );
	SetState( Connected );
}

void CTargetConnection::OnLinkChunk( const wire::ChunkHeader &header, uint8_t *pBlock )
{
	m_Traffic.AddChunk( wire::CHUNK_HEADER_SIZE + header.m_nLength );
	const QPointer<CTargetConnection> pSelf( this );
	m_nDelivering++;
	NoteLifeSign( header.m_nType );
	TakeHostChunk( header, { pBlock + wire::CHUNK_HEADER_SIZE, header.m_nLength } );
	if ( header.m_nVersion != wire::CHUNK_VERSION && pSelf )
		NoteForeignVersion( header );
	if ( !pSelf )
	{
		g_pMemAlloc->Free( pBlock );
		return;
	}
	const auto found = m_Receivers.find( { header.m_nType, header.m_nVersion } );
	if ( found == m_Receivers.end() || m_bDeliveryStopped )
		g_pMemAlloc->Free( pBlock );
	else
		found->second->OnDataReceived( this, header.m_nType, header.m_nVersion, header.m_nLength, pBlock );
	if ( !pSelf )
		return;
	m_nDelivering--;
	emit DeliveryFinished();
}

void CTargetConnection::TakeHostChunk( const wire::ChunkHeader &header, std::span<const uint8_t> payload )
{
	if ( header.m_nVersion != wire::CHUNK_VERSION )
		return;
	if ( header.m_nType == wire::CHUNK_DROPPED )
		TakeDropped( wire::ReadDropped( payload ).value_or( m_nDroppedFrames ) );
	else if ( header.m_nType == wire::CHUNK_PRINT && !m_bDeliveryStopped )
		TakePrint( payload );
}

// The list shows how many; that it happens at all is worth a line, once a session.
void CTargetConnection::TakeDropped( uint64_t nFrames )
{
	const bool bFirst = m_nDroppedFrames == 0 && nFrames > 0;
	m_nDroppedFrames = nFrames;
	if ( bFirst )
		emit Reported( LoggingSeverity::Warning, tr( "leaves frames out, because this console reads too slowly" ) );
}

void CTargetConnection::TakePrint( std::span<const uint8_t> payload )
{
	if ( const std::optional<wire::PrintLine> line = wire::ReadPrint( payload ) )
	{
		const int nLength = static_cast<int>( LengthToShow( line->m_Text ) );
		emit Printed( ToSeverity( line->m_Severity ), QString::fromUtf8( line->m_Text.data(), nLength ) );
	}
}

void CTargetConnection::NoteLifeSign( uint32_t nChunkType )
{
	m_bBeats = m_bBeats || nChunkType == wire::CHUNK_BEAT;
	m_bSampling = m_bSampling || ( m_bSamplingWanted && nChunkType == wire::CHUNK_SAMPLE );
}

// An idle engine has nothing to say. Silence means something where signs of life were promised, or where every frame
// should bring a sample.
void CTargetConnection::OnLinkSilent( bool bSilent )
{
	const bool bStalled = bSilent && ( m_bBeats || m_bSampling );
	if ( std::exchange( m_bStalled, bStalled ) == bStalled )
		return;
	m_flSilentSince = Plat_FloatTime() - m_Timeouts.m_nSilenceMs / 1000.0;
	const QPointer<CTargetConnection> pSelf( this );
	if ( bStalled )
		emit Reported(
			LoggingSeverity::Warning, tr( "stalled: nothing came for %1 s" ).arg( m_Timeouts.m_nSilenceMs / 1000.0 ) );
	else
		emit Reported( LoggingSeverity::Message, tr( "no longer stalled" ) );
	if ( pSelf )
		emit StalledChanged();
}

double CTargetConnection::SilentSeconds() const
{
	return m_bStalled ? Plat_FloatTime() - m_flSilentSince : 0.0;
}

// Said once a session: every chunk of that engine will be like this one.
void CTargetConnection::NoteForeignVersion( const wire::ChunkHeader &header )
{
	if ( std::exchange( m_bForeignVersionNoted, true ) )
		return;
	emit Reported( LoggingSeverity::Warning,
		tr( "sent %1 in version %2; this console understands version %3 and skips such chunks" )
			.arg( wire::DescribeChunkType( header.m_nType ).m_Text, QString::number( header.m_nVersion ),
				QString::number( wire::CHUNK_VERSION ) ) );
}

void CTargetConnection::OnLinkEnded( CChunkLink::EndKind kind, const QString &reason )
{
	m_pLink = nullptr;
	m_nProcessId = 0;
	m_bStalled = false;
	if ( IsConnected() && Plat_FloatTime() - m_flConnectedAt >= PROVEN_AFTER )
		m_Delay.Reset();
	m_RetryTimer.start( DelayAfter( kind ) );
	const QPointer<CTargetConnection> pSelf( this );
	ReportProblem( reason );
	if ( pSelf && m_RetryTimer.isActive() )
		SetState( Waiting );
}

int CTargetConnection::DelayAfter( CChunkLink::EndKind kind )
{
	switch ( kind )
	{
		case CChunkLink::EndKind::Refused:
			return m_Delay.AfterRefusal();
		case CChunkLink::EndKind::TurnedAway:
			return m_Delay.AfterTurnedAway();
		case CChunkLink::EndKind::Lost:
			break;
	}
	return m_Delay.AfterLoss();
}

// An engine that is away is away for many attempts: what went wrong is said when it changes.
void CTargetConnection::ReportProblem( const QString &problem )
{
	if ( std::exchange( m_Problem, problem ) == problem )
		return;
	emit Reported( LoggingSeverity::Warning,
		( IsConnected() ? tr( "connection lost: %1" ) : tr( "cannot connect: %1" ) ).arg( problem ) );
}

void CTargetConnection::SetState( State state )
{
	if ( m_State == state )
		return;
	const int nBefore = std::exchange( m_State, state );
	emit StateChanged( nBefore );
}
