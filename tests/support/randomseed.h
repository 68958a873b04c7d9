// Where random tests begin.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

// A new seed for every run, or the one in the environment variable SHOWBUDGET_SEED, to repeat a failed run. To be
// printed with SCOPED_TRACE( SeedText( nSeed ) ).
inline uint32_t RandomSeed()
{
	const char *pWanted = std::getenv( "SHOWBUDGET_SEED" );
	return pWanted ? static_cast<uint32_t>( std::strtoul( pWanted, nullptr, 10 ) ) : std::random_device{}();
}

inline std::string SeedText( uint32_t nSeed )
{
	return "repeat with SHOWBUDGET_SEED=" + std::to_string( nSeed );
}
