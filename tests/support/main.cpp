#include <gmock/gmock.h>

#include "support/logguard.h"

int main( int nArguments, char **ppArguments )
{
	testing::InitGoogleMock( &nArguments, ppArguments );
	InstallLogGuard();
	return RUN_ALL_TESTS();
}
