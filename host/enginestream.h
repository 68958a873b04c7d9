// What an engine sends, understood: its greeting, then chunks.
#pragma once

#include <QString>

#include <cstdint>
#include <span>

#include "wire/chunkassembler.h"
#include "wire/sessionchunks.h"

// Judges the greeting as well: the protocol must be the same, an engine may refuse the console, and a console that has
// a token wants to see it. Knows no socket. What it finds does not depend on where the stream of bytes is cut into
// pieces.
class CEngineStream
{
public:
	enum class Refusal
	{
		None,
		Foreign,   // the peer does not speak this protocol
		TurnedAway // one of the two does not want the other: somebody has to change something first
	};

	enum class Event
	{
		NeedMore, // every byte was taken
		Greeted,  // once, before all chunks: PeerHello() is there
		Chunk,    // TakeBlock() before the next Feed
		Refused   // Why() and Problem() tell; nothing is taken any more
	};

	explicit CEngineStream( const wire::Hello &ownHello );

	// Takes bytes from the front of `bytes` (which shrinks by them) up to the next event.
	Event Feed( std::span<const uint8_t> &bytes );

	bool IsGreeted() const { return m_bGreeted; }
	const wire::Hello &PeerHello() const { return m_PeerHello; }

	// Of the chunk at hand.
	const wire::ChunkHeader &Header() const { return m_Assembler.Header(); }

	// The chunk at hand, header and payload: one g_pMemAlloc block that the caller owns from now on.
	uint8_t *TakeBlock() { return m_Assembler.TakeBlock(); }

	Refusal Why() const { return m_Refusal; }

	// One line for the user.
	const QString &Problem() const { return m_Problem; }

private:
	Event Refuse( Refusal refusal, const QString &problem );
	QString ProblemOfFirstChunk() const;
	Event Greet();
	Event Judge( const wire::Hello &hello );
	QString ProblemOfToken( const std::string &token ) const;

	wire::Hello m_OwnHello;
	wire::CChunkAssembler m_Assembler;
	wire::Hello m_PeerHello;
	Refusal m_Refusal = Refusal::None;
	QString m_Problem;
	bool m_bGreeted = false;
};
