// Where an engine process listens.
#pragma once

#include <QString>

#include <cstdint>
#include <optional>

#include "wire/chunks.h"

struct TargetAddress
{
	QString m_Host = QStringLiteral( "127.0.0.1" );
	uint16_t m_nPort = wire::DEFAULT_PORT;

	// "host:port", an IPv6 address in brackets. ParseTargetAddress reads it back.
	QString ToString() const;

	friend bool operator==( const TargetAddress &, const TargetAddress & ) = default;
};

// Reads "host[:port]": a host name, an IPv4 address, or an IPv6 address (in brackets when a port follows). Blanks
// around it are ignored, host names become lower case. On a bad text the result is empty and error (one line, naming
// the text) says why.
std::optional<TargetAddress> ParseTargetAddress( const QString &text, QString &error );
