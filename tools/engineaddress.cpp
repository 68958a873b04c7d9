#include "tools/engineaddress.h"

#include <charconv>

static std::optional<uint16_t> ReadPort( std::string_view text )
{
	uint16_t nPort = 0;
	const auto [pEnd, error] = std::from_chars( text.data(), text.data() + text.size(), nPort );
	if ( error != std::errc() || pEnd != text.data() + text.size() || nPort == 0 )
		return std::nullopt;
	return nPort;
}

std::optional<EngineAddress> ReadEngineAddress( std::string_view text )
{
	EngineAddress address;
	size_t nColon = text.find( ':' );
	if ( text.starts_with( '[' ) )
	{
		const size_t nClose = text.find( ']' );
		if ( nClose == std::string_view::npos )
			return std::nullopt;
		address.m_Host = text.substr( 1, nClose - 1 );
		nColon = nClose + 1;
		if ( nColon < text.size() && text[nColon] != ':' )
			return std::nullopt;
	}
	else if ( nColon != text.rfind( ':' ) ) // several: an IPv6 address, alone
		nColon = text.size();
	if ( address.m_Host.empty() )
		address.m_Host = text.substr( 0, nColon );
	if ( address.m_Host.empty() || address.m_Host == "[]" )
		return std::nullopt;
	if ( nColon >= text.size() )
		return address;
	const std::optional<uint16_t> nPort = ReadPort( text.substr( nColon + 1 ) );
	if ( !nPort )
		return std::nullopt;
	address.m_nPort = *nPort;
	return address;
}
