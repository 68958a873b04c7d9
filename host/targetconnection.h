// The user's wish to be connected to one engine, and what it has come to.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <map>
#include <string>

#include "chunklink.h"
#include "keel0/logging.h"
#include "reconnectdelay.h"
#include "targetaddress.h"
#include "tessel/itesselconnection.h"
#include "trafficmeter.h"

// One object stands for the connection as long as the user keeps it in the list. Losing the engine is a change of
// state; while the connection is wanted it tries again by itself, and receivers stay registered.
class CTargetConnection final
	: public QObject
	, public ITesselConnection
	, private CChunkLink::IOwner
{
	Q_OBJECT

public:
	// What GetState returns.
	enum State : int
	{
		Idle = 0,       // not wanted
		Waiting = 1,    // wanted; the next attempt comes by itself
		Connecting = 2, // an attempt is under way
		Connected = 3   // greeted: chunks flow
	};

	explicit CTargetConnection( const TargetAddress &address, QObject *pParent = nullptr );
	~CTargetConnection() override;

	// ITesselConnection. The name is the one that the engine last greeted with, until then the address.
	const char *GetName() const override;
	void RegisterReceiver( uint32_t nChunkType, uint16_t nVersion, ITesselDataReceived *pReceiver ) override;
	int GetState() const override;
	bool SendChunk( uint32_t nChunkType, uint16_t nVersion, uint32_t nLength, uint8_t *pBuffer ) override;

	// For the attempts from now on: sent to the engine, and wanted from it. Empty: none.
	void SetToken( const std::string &token ) { m_Token = token; }

	// Connect: tries at once, and again whenever the link is lost. Disconnect: lets the link go.
	void Connect();
	void Disconnect();

	// The connection is about to go away: from now on nobody receives anything.
	void StopDelivery();

	const TargetAddress &Address() const { return m_Address; }
	QString Name() const;
	bool IsWanted() const { return m_State != Idle; }
	bool IsConnected() const { return m_State == Connected; }

	// True while a receiver is busy with a chunk of this connection (it may run events): a bad moment for the
	// connection and its receivers to go away. DeliveryFinished follows.
	bool IsDelivering() const { return m_nDelivering > 0; }

	// Why there is no link, one line; empty while connected or when nothing went wrong.
	const QString &Problem() const { return m_Problem; }

	// Until the next attempt; -1 when none is planned.
	int MillisecondsToRetry() const { return m_RetryTimer.remainingTime(); }

	// What the engine reported of itself, this session. Process id 0 when not greeted.
	uint32_t ProcessId() const { return m_nProcessId; }
	uint64_t DroppedFrames() const { return m_nDroppedFrames; }

	// Connected, but nothing comes although something should: seconds since the last byte; 0 while all is well.
	bool IsStalled() const { return m_bStalled; }
	double SilentSeconds() const;

	const CTrafficMeter &Traffic() const { return m_Traffic; }
	void MeasureTraffic();

	// For tests: shorter patience for the attempts from now on.
	void SetTimeouts( const CChunkLink::Timeouts &timeouts ) { m_Timeouts = timeouts; }

signals:
	void StateChanged( int nBefore );
	void StalledChanged();
	void Printed( LoggingSeverity severity, const QString &text );  // the engine's own lines
	void Reported( LoggingSeverity severity, const QString &text ); // about the connection
	void DeliveryFinished();

private:
	void OnLinkGreeted( const wire::Hello &hello ) override;
	void OnLinkChunk( const wire::ChunkHeader &header, uint8_t *pBlock ) override;
	void OnLinkSilent( bool bSilent ) override;
	void OnLinkEnded( CChunkLink::EndKind kind, const QString &reason ) override;

	void Attempt();
	int DelayAfter( CChunkLink::EndKind kind );
	void TakeHostChunk( const wire::ChunkHeader &header, std::span<const uint8_t> payload );
	void TakeDropped( uint64_t nFrames );
	void TakePrint( std::span<const uint8_t> payload );
	void NoteLifeSign( uint32_t nChunkType );
	void NoteForeignVersion( const wire::ChunkHeader &header );
	void ReportProblem( const QString &problem );
	void SetState( State state );

	TargetAddress m_Address;
	std::string m_Name;
	std::string m_Token;
	State m_State = Idle;
	CChunkLink *m_pLink = nullptr;
	CChunkLink::Timeouts m_Timeouts;
	QTimer m_RetryTimer;
	CReconnectDelay m_Delay;
	double m_flConnectedAt = 0.0; // Plat_FloatTime
	QString m_Problem;
	std::map<std::pair<uint32_t, uint16_t>, ITesselDataReceived *> m_Receivers;
	CTrafficMeter m_Traffic;
	uint64_t m_nDroppedFrames = 0;
	uint32_t m_nProcessId = 0;
	int m_nDelivering = 0;
	bool m_bDeliveryStopped = false;
	bool m_bForeignVersionNoted = false;
	bool m_bBeats = false;          // this engine promises a sign of life every second
	bool m_bSamplingWanted = false; // the console asked for samples
	bool m_bSampling = false;       // and they came
	bool m_bStalled = false;
	double m_flSilentSince = 0.0; // Plat_FloatTime
};
