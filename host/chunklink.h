// One attempt to talk to an engine: a socket, its patience, and chunks handed over in turns.
#pragma once

#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include <cstdint>
#include <span>
#include <vector>

#include "enginestream.h"
#include "targetaddress.h"

// Lives on the user-interface thread and never waits. Chunks are handed over one at a time and in order; a turn of the
// event loop hands over a bounded number of them, so that a burst leaves time for painting. While an owner is busy with
// one chunk (it may run events), the next ones wait: first here, then in the socket's bounded buffer, then in the
// engine.
class CChunkLink final : public QObject
{
	Q_OBJECT

public:
	enum class EndKind
	{
		Lost,      // no link, or it broke: another attempt may do better soon
		Refused,   // the peer does not speak this protocol: it will not soon
		TurnedAway // the peer does not want this console, or the other way round: only a user can change that
	};

	class IOwner
	{
	public:
		// The peer's greeting is valid: Send works from now on, and chunks may follow.
		virtual void OnLinkGreeted( const wire::Hello &hello ) = 0;

		// One chunk behind the greeting. pBlock is a g_pMemAlloc block (header, payload) that the owner takes over. The
		// owner may close the link and may run events.
		virtual void OnLinkChunk( const wire::ChunkHeader &header, uint8_t *pBlock ) = 0;

		// Nothing came for a while (Timeouts::m_nSilenceMs); false when bytes come again. The link goes on as before.
		virtual void OnLinkSilent( bool bSilent ) = 0;

		// The last call: everything that arrived was handed over. The link ends itself. reason is one line.
		virtual void OnLinkEnded( EndKind kind, const QString &reason ) = 0;

	protected:
		~IOwner() = default;
	};

	struct Timeouts
	{
		int m_nConnectMs = 3000;
		int m_nGreetingMs = 3000; // from the connect to the whole 'HELO'
		int m_nSilenceMs = 3000;  // from the last byte to OnLinkSilent
	};

	// owner must live until OnLinkEnded or Close.
	CChunkLink( IOwner &owner, const wire::Hello &ownHello, const Timeouts &timeouts, QObject *pParent );
	~CChunkLink() override;

	// Begins to connect. Call once.
	void Open( const TargetAddress &address );

	// Queues a chunk. False when the peer was not greeted, the payload is too long, or too much waits to be sent.
	bool Send( const wire::ChunkHeader &header, std::span<const uint8_t> payload );

	// Ends the link without a further call to the owner. What was sent before goes out as far as that needs no waiting.
	// The link deletes itself.
	void Close();

private:
	class CTurnBudget;
	enum class Step
	{
		GoOn,     // there may be more
		NeedMore, // every byte was looked at
		Ended     // the link was ended or closed: nothing of it may be touched but its end
	};

	void OnConnected();
	void OnDisconnected();
	void OnError();
	void OnDeadline();
	void OnSilence();
	void Pump();
	Step NextStep( CTurnBudget &budget );
	template <typename Call>
	Step HandOver( Call call );
	void HandOverChunk();
	bool FillUnread();
	bool IsSomethingWaiting() const;
	Step EndSilence();
	void Write( const wire::ChunkHeader &header, std::span<const uint8_t> payload );
	void SetLinkOptions();
	void FinishIfPeerGone();
	void End( EndKind kind, const QString &reason );

	IOwner *m_pOwner;
	wire::Hello m_OwnHello;
	Timeouts m_Timeouts;
	QTcpSocket m_Socket;
	QTimer m_Deadline;
	QTimer m_NextTurn;
	QTimer m_Silence;
	CEngineStream m_Stream;
	std::vector<uint8_t> m_ReadBuffer;
	std::span<const uint8_t> m_Unread; // the part of m_ReadBuffer that was not looked at yet
	QString m_GoneReason;
	bool m_bPumping = false;
	bool m_bPeerGone = false;
	bool m_bSilent = false;
};
