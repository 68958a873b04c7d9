// All connections of the console, and which one is the current one.
#pragma once

#include <QObject>
#include <QTimer>

#include <string>
#include <vector>

#include "keel0/logging.h"
#include "targetaddress.h"

class CTargetConnection;

class CConnectionList final : public QObject
{
	Q_OBJECT

public:
	explicit CConnectionList( QObject *pParent = nullptr );
	~CConnectionList() override;

	// For the connections that are made from now on.
	void SetToken( const std::string &token ) { m_Token = token; }

	// The connection to that address: made, connected and made current; one that is there already is used again.
	CTargetConnection *Add( const TargetAddress &address );

	// Takes the connection out of the list at once. Ending is emitted before it disconnects and goes away; where a
	// receiver is busy with a chunk of it, that waits until the receiver returns.
	void Remove( CTargetConnection *pConnection );
	void RemoveAll(); // for the end of the program: waits for nothing

	int Count() const { return static_cast<int>( m_Connections.size() ); }
	CTargetConnection *At( int nIndex ) const { return m_Connections[static_cast<size_t>( nIndex )]; }
	int IndexOf( const CTargetConnection *pConnection ) const; // -1 when it is not in the list

	// The one that sub-tools open for and commands go to; null only when the list is empty.
	CTargetConnection *Current() const { return m_pCurrent; }
	void SetCurrent( CTargetConnection *pConnection );

signals:
	void AboutToAdd( int nIndex );
	void Added( CTargetConnection *pConnection );
	void AboutToRemove( int nIndex );
	void Removed();
	void CurrentChanged( CTargetConnection *pConnection );
	void Changed( CTargetConnection *pConnection );     // state, name or traffic: what is shown
	void LinkChanged( CTargetConnection *pConnection ); // connected now, or not any more
	void Ending( CTargetConnection *pConnection );      // the last moment in which it may be used
	void Printed( CTargetConnection *pConnection, LoggingSeverity severity, const QString &text );
	void Reported( CTargetConnection *pConnection, LoggingSeverity severity, const QString &text );

private:
	void Watch( CTargetConnection *pConnection );
	void OnStateChanged( CTargetConnection *pConnection, int nBefore );
	void Finish( CTargetConnection *pConnection );
	void MeasureTraffic();

	std::string m_Token;
	std::vector<CTargetConnection *> m_Connections;
	std::vector<CTargetConnection *> m_Leaving; // removed, but one of their receivers is still busy
	CTargetConnection *m_pCurrent = nullptr;
	QTimer m_TrafficTimer;
};
