// Marks what the base library exports.
#pragma once

#define KEEL0_API __attribute__( ( visibility( "default" ) ) )
#define KEEL0_PRINTF( nFormat, nFirst ) __attribute__( ( format( printf, nFormat, nFirst ) ) )
