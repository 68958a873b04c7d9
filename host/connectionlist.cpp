#include "connectionlist.h"

#include <algorithm>

#include "targetconnection.h"

CConnectionList::CConnectionList( QObject *pParent )
	: QObject( pParent )
{
	m_TrafficTimer.setInterval( 1000 );
	connect( &m_TrafficTimer, &QTimer::timeout, this, &CConnectionList::MeasureTraffic );
	m_TrafficTimer.start();
}

CConnectionList::~CConnectionList()
{
	RemoveAll();
}

CTargetConnection *CConnectionList::Add( const TargetAddress &address )
{
	const auto found = std::find_if( m_Connections.begin(), m_Connections.end(),
		[&address]( const CTargetConnection *p ) { return p->Address() == address; } );
	CTargetConnection *pConnection = nullptr;
	if ( found != m_Connections.end() )
	{
		pConnection = *found;
	}
	else
	{
		emit AboutToAdd( Count() );
		pConnection = new CTargetConnection( address, this );
		pConnection->SetToken( m_Token );
		m_Connections.push_back( pConnection );
		Watch( pConnection );
		emit Added( pConnection );
	}
	SetCurrent( pConnection );
	pConnection->Connect();
	return pConnection;
}

void CConnectionList::Watch( CTargetConnection *pConnection )
{
	connect( pConnection, &CTargetConnection::StateChanged, this,
		[this, pConnection]( int nBefore ) { OnStateChanged( pConnection, nBefore ); } );
	connect(
		pConnection, &CTargetConnection::StalledChanged, this, [this, pConnection]() { emit Changed( pConnection ); } );
	connect( pConnection, &CTargetConnection::Printed, this,
		[this, pConnection]( LoggingSeverity severity, const QString &text )
		{ emit Printed( pConnection, severity, text ); } );
	connect( pConnection, &CTargetConnection::Reported, this,
		[this, pConnection]( LoggingSeverity severity, const QString &text )
		{ emit Reported( pConnection, severity, text ); } );
}

void CConnectionList::OnStateChanged( CTargetConnection *pConnection, int nBefore )
{
	emit Changed( pConnection );
	if ( ( nBefore == CTargetConnection::Connected ) != pConnection->IsConnected() )
		emit LinkChanged( pConnection );
}

void CConnectionList::Remove( CTargetConnection *pConnection )
{
	const int nIndex = IndexOf( pConnection );
	if ( nIndex < 0 )
		return;
	emit AboutToRemove( nIndex );
	m_Connections.erase( m_Connections.begin() + nIndex );
	emit Removed();
	if ( m_pCurrent == pConnection )
		SetCurrent( m_Connections.empty() ? nullptr : At( std::min( nIndex, Count() - 1 ) ) );

	if ( !pConnection->IsDelivering() )
	{
		Finish( pConnection );
		return;
	}
	m_Leaving.push_back( pConnection );
	pConnection->StopDelivery();
	connect( pConnection, &CTargetConnection::DeliveryFinished, this,
		[this, pConnection]()
		{
			m_Leaving.erase( std::find( m_Leaving.begin(), m_Leaving.end(), pConnection ) );
			Finish( pConnection );
		} );
}

// Whoever used the connection is told first, while it can still say good-bye to the engine.
void CConnectionList::Finish( CTargetConnection *pConnection )
{
	emit Ending( pConnection );
	pConnection->StopDelivery();
	pConnection->disconnect( this );
	pConnection->Disconnect();
	pConnection->deleteLater();
}

void CConnectionList::RemoveAll()
{
	while ( !m_Connections.empty() )
		Remove( m_Connections.back() );
	for ( CTargetConnection *pConnection : std::exchange( m_Leaving, {} ) )
		Finish( pConnection );
}

int CConnectionList::IndexOf( const CTargetConnection *pConnection ) const
{
	const auto found = std::find( m_Connections.begin(), m_Connections.end(), pConnection );
	return found == m_Connections.end() ? -1 : static_cast<int>( found - m_Connections.begin() );
}

void CConnectionList::SetCurrent( CTargetConnection *pConnection )
{
	if ( m_pCurrent == pConnection )
		return;
	m_pCurrent = pConnection;
	emit CurrentChanged( pConnection );
}

void CConnectionList::MeasureTraffic()
{
	for ( CTargetConnection *pConnection : m_Connections )
	{
		pConnection->MeasureTraffic();
		emit Changed( pConnection );
	}
}
