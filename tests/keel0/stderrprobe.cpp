// Does one thing that its argument names; what reaches stderr is looked at by the test that runs it.
#include <cstring>

#include "keel0/logging.h"
#include "keel0/platform.h"

namespace
{
void AnswerEveryText( LoggingSeverity, const char *pText, void * )
{
	Msg( "%s!", pText );
}
} // namespace

int main( int nArguments, char **ppArguments )
{
	const char *pWhat = nArguments > 1 ? ppArguments[1] : "";
	if ( std::strcmp( pWhat, "log" ) == 0 )
	{
		Msg( "one %d\n", 1 );
		Warning( "two %s\n", "2" );
		Logging_Error( "three\n" );
	}
	else if ( std::strcmp( pWhat, "removed" ) == 0 )
	{
		Logging_AddListener( AnswerEveryText, nullptr );
		Logging_RemoveListener( AnswerEveryText, nullptr );
		Msg( "nobody listens\n" );
	}
	else if ( std::strcmp( pWhat, "answers" ) == 0 )
	{
		Logging_AddListener( AnswerEveryText, nullptr );
		Msg( "text" );
	}
	else if ( std::strcmp( pWhat, "debug" ) == 0 )
	{
		Plat_DebugPrint( "100% as it is\n" );
		Plat_DebugPrint( nullptr );
	}
	else
	{
		return 2;
	}
	return 0;
}
