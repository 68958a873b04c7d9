// Where an engine process listens.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "wire/chunks.h"

struct EngineAddress
{
	std::string m_Host;
	uint16_t m_nPort = wire::DEFAULT_PORT;
};

// Reads "HOST[:PORT]". An IPv6 address stands in brackets when a port follows. Whether the host exists is not looked
// at. None when the host is missing or the port is not a number from 1 to 65535.
std::optional<EngineAddress> ReadEngineAddress( std::string_view text );
