// Compiled as C++17 without exceptions and run-time type information.
#define SHOWBUDGET_PROJECT "header check"
#include "target/showbudget.h"

static_assert( __cplusplus == 201703L );

SHOWBUDGET_BUDGET( g_HeaderCheck, "Header check", 1, 2, 3 );

int ScopesInOldCode( int nValue )
{
	SHOWBUDGET_FUNCTION( g_HeaderCheck );
	{
		SHOWBUDGET_SCOPE( g_HeaderCheck, "Inner" );
		return nValue + 1;
	}
}
