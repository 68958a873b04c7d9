#include "frame/interfaceregistry.h"

#include <gtest/gtest.h>

namespace
{
int g_nFirst = 0;
int g_nSecond = 0;

void *First()
{
	return &g_nFirst;
}

void *Second()
{
	return &g_nSecond;
}
} // namespace

TEST( InterfaceRegistry, AnEmptyOneKnowsNothing )
{
	const CInterfaceRegistry registry;
	int nReturnCode = 77;
	EXPECT_EQ( registry.Create( "Tool_001", &nReturnCode ), nullptr );
	EXPECT_EQ( nReturnCode, 1 );
}

TEST( InterfaceRegistry, FindsEachRegistrationByItsName )
{
	CInterfaceRegistry registry;
	const CInterfaceRegistration first( registry, &First, "Tool_001" );
	const CInterfaceRegistration second( registry, &Second, "Tool_002" );
	int nReturnCode = 77;
	EXPECT_EQ( registry.Create( "Tool_001", &nReturnCode ), &g_nFirst );
	EXPECT_EQ( nReturnCode, 0 );
	nReturnCode = 77;
	EXPECT_EQ( registry.Create( "Tool_002", &nReturnCode ), &g_nSecond );
	EXPECT_EQ( nReturnCode, 0 );
}

TEST( InterfaceRegistry, TheRegistrationMadeLastIsFoundFirst )
{
	CInterfaceRegistry registry;
	const CInterfaceRegistration first( registry, &First, "Tool_001" );
	const CInterfaceRegistration second( registry, &Second, "Tool_001" );
	EXPECT_EQ( registry.Create( "Tool_001", nullptr ), &g_nSecond );
}

TEST( InterfaceRegistry, ComparesNamesByteForByte )
{
	CInterfaceRegistry registry;
	const CInterfaceRegistration first( registry, &First, "Tool_001" );
	for ( const char *pName : { "tool_001", "TOOL_001", "Tool_00", "Tool_0011", " Tool_001", "" } )
	{
		int nReturnCode = 77;
		EXPECT_EQ( registry.Create( pName, &nReturnCode ), nullptr ) << pName;
		EXPECT_EQ( nReturnCode, 1 ) << pName;
	}
	EXPECT_EQ( registry.Create( nullptr, nullptr ), nullptr );
}

TEST( InterfaceRegistry, WorksWithoutAReturnCode )
{
	CInterfaceRegistry registry;
	const CInterfaceRegistration first( registry, &First, "Tool_001" );
	EXPECT_EQ( registry.Create( "Tool_001", nullptr ), &g_nFirst );
	EXPECT_EQ( registry.Create( "Tool_002", nullptr ), nullptr );
}
