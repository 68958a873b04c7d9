// A conversation with an engine process, as a console has it.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "tools/engineaddress.h"
#include "wire/chunkheader.h"

struct EngineSessionEnd
{
	bool m_bSampling = false; // the engine greeted and was asked for its budgets
	std::string m_Problem;    // empty when the time was over, the handler had enough, or a signal said stop
};

// Called with each chunk after the greeting, and the seconds since sampling was asked for. False ends the session.
using ChunkHandler =
	std::function<bool( const wire::ChunkHeader &header, std::span<const uint8_t> payload, double flSeconds )>;

// Connects, greets, asks for budgets, and hands on what the engine sends until flSeconds later. Connecting and the
// greeting may take 3 seconds each. SIGINT and SIGTERM end the session in good order. Chunks of another version are
// skipped. With a token that is not empty, an engine that does not know it is not talked to.
EngineSessionEnd RunEngineSession(
	const EngineAddress &address, const std::string &token, double flSeconds, const ChunkHandler &handler );
