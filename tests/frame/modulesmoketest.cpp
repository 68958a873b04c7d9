// The built module, loaded by its file as a host does.
#include <dlfcn.h>
#include <gmock/gmock.h>

#include <QApplication>
#include <QWidget>
#include <cstdio>
#include <sstream>

#include "frame/budgetwindows.h"
#include "frame/fakeservices.h"
#include "keel0/keyvalues.h"
#include "support/countingallocator.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"
#include "tessel/factory.h"
#include "tessel/iexternalsubtool.h"
#include "tessel/itesselsubtool.h"

using testing::ElementsAre;

namespace
{
class ModuleTest : public testing::Test
{
protected:
	ModuleTest()
		: m_pModule( dlopen( KESTO_SUBTOOL_FILE, RTLD_NOW | RTLD_LOCAL ) )
	{
		EXPECT_NE( m_pModule, nullptr ) << dlerror();
	}

	// Not closed again: tests/events unloads it, in a process that has none of its classes itself.
	template <typename Function>
	Function Export( const char *pName ) const
	{
		void *pSymbol = dlsym( m_pModule, pName );
		EXPECT_NE( pSymbol, nullptr ) << pName;
		return reinterpret_cast<Function>( pSymbol );
	}

	IExternalTesselSubTool *CreateTool() const
	{
		void *pTool = Export<CreateInterfaceFn>( "CreateInterface" )( "Tessel_SubTool_001_ShowBudgetTool", nullptr );
		return static_cast<IExternalTesselSubTool *>( pTool );
	}

	void *m_pModule;
};

std::string OutputOf( const std::string &command )
{
	std::string output;
	FILE *pPipe = popen( command.c_str(), "r" );
	char buffer[4096];
	while ( pPipe && std::fgets( buffer, sizeof( buffer ), pPipe ) )
		output += buffer;
	EXPECT_EQ( pclose( pPipe ), 0 ) << command;
	return output;
}
} // namespace

TEST_F( ModuleTest, ExportsItsFiveFunctionsAndNothingElseButTypeInformation )
{
	std::istringstream lines( OutputOf( NM_COMMAND " -D --defined-only '" KESTO_SUBTOOL_FILE "'" ) );
	std::vector<std::string> functions;
	std::string address;
	std::string kind;
	std::string name;
	while ( lines >> address >> kind >> name )
	{
		const bool bTypeInformation = name.starts_with( "_ZTI" ) || name.starts_with( "_ZTS" );
		if ( !bTypeInformation )
			functions.push_back( name );
	}
	EXPECT_THAT( functions, ElementsAre( "BinaryProperties_GetValue", "CreateInterface", "GetResourceManifestCount",
								"GetResourceManifests", "InstallSchemaBindings" ) );
}

TEST_F( ModuleTest, CreateInterfaceKnowsTheToolByItsExactName )
{
	const auto createInterface = Export<CreateInterfaceFn>( "CreateInterface" );
	int nReturnCode = 77;
	void *pTool = createInterface( "Tessel_SubTool_001_ShowBudgetTool", &nReturnCode );
	EXPECT_NE( pTool, nullptr );
	EXPECT_EQ( nReturnCode, 0 );
	EXPECT_EQ( createInterface( "Tessel_SubTool_001_ShowBudgetTool", nullptr ), pTool ) << "one and the same";
	EXPECT_EQ( createInterface( "tessel_subtool_001_showbudgettool", &nReturnCode ), nullptr );
	EXPECT_EQ( nReturnCode, 1 );
	EXPECT_EQ( createInterface( "Tessel_SubTool_001", nullptr ), nullptr );
}

TEST_F( ModuleTest, TheOtherInterfaceIsReachedByDynamicCast )
{
	auto *pSubTool = dynamic_cast<ITesselSubTool *>( CreateTool() );
	ASSERT_NE( pSubTool, nullptr );
	EXPECT_TRUE( pSubTool->NeedsConnection() );
	EXPECT_FALSE( pSubTool->IsHidden() );
}

TEST_F( ModuleTest, SaysWhatItWasBuiltAs )
{
	struct Record
	{
		void *m_pValue;
		uint32_t m_nKind;
	};
	const auto getValue = Export<int ( * )( int, Record * )>( "BinaryProperties_GetValue" );
	Record record = { nullptr, 77 };
	EXPECT_EQ( getValue( 3, &record ), 1 );
	EXPECT_EQ( record.m_nKind, 0u );
	EXPECT_STREQ( static_cast<const char *>( record.m_pValue ), "kesto_subtool" );
	EXPECT_EQ( getValue( 7, &record ), 1 );
	EXPECT_EQ( record.m_nKind, 1u );
	EXPECT_EQ( reinterpret_cast<intptr_t>( record.m_pValue ), 2 );
	EXPECT_EQ( getValue( 8, &record ), 0 );
	EXPECT_EQ( reinterpret_cast<intptr_t>( record.m_pValue ), 2 );
}

TEST_F( ModuleTest, HasNoResourceManifests )
{
	EXPECT_EQ( Export<int ( * )()>( "GetResourceManifestCount" )(), 0 );
	void *pManifest = this;
	EXPECT_EQ( Export<int ( * )( int, void **, void * )>( "GetResourceManifests" )( 1, &pManifest, nullptr ), 0 );
	EXPECT_EQ( pManifest, this );
}

TEST_F( ModuleTest, InstallsItsSchemaBindingsOnce )
{
	const auto install = Export<bool ( * )( const char *, ISchemaSystem * )>( "InstallSchemaBindings" );
	static CFakeSchemaSystem schemaSystem; // the module keeps it
	EXPECT_FALSE( install( "SchemaSystem_002", &schemaSystem ) );
	EXPECT_TRUE( install( "SchemaSystem_001", &schemaSystem ) );
	EXPECT_TRUE( install( "SchemaSystem_001", &schemaSystem ) );
	EXPECT_THAT( schemaSystem.m_Installed, ElementsAre( "kesto_subtool" ) );
}

TEST_F( ModuleTest, LivesThroughAHostsWholeSession )
{
	CCountingAllocator allocator;
	CFakeServices services;
	CFakeConnection connection( "demo" );
	CFakeHost host( &connection );
	KeyValues stored( "Show Budget" );
	IExternalTesselSubTool *pTool = CreateTool();
	auto *pSubTool = dynamic_cast<ITesselSubTool *>( pTool );

	EXPECT_TRUE( pTool->Connect( &CFakeServices::Factory ) );
	EXPECT_EQ( pTool->Initialise(), 1 );
	pSubTool->SetHost( &host, nullptr );
	pSubTool->LoadSettings( &stored );
	EXPECT_TRUE( pSubTool->Open() );
	ASSERT_EQ( BudgetWindows().size(), 1u );
	QWidget *pWindow = BudgetWindows()[0];
	EXPECT_STREQ( pWindow->metaObject()->className(), "CQBudgetWidget" );
	EXPECT_EQ( pWindow->windowTitle(), "Show Budget - demo" );

	const uint8_t oneCategory[4 + 68] = { 0, 0, 0, 1, 'R' };
	const uint8_t oneSample[] = { 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0x27, 0x10 };
	EXPECT_TRUE( connection.Deliver( 0x50434154, oneCategory ) );
	EXPECT_TRUE( connection.Deliver( 0x50435055, oneSample ) );
	QApplication::processEvents();

	EXPECT_NE( pSubTool->SaveSettings()->FindKey( "geometry" ), nullptr );
	pTool->ShutDown();
	pTool->Disconnect();
	EXPECT_TRUE( BudgetWindows().empty() );
	EXPECT_THAT( services.m_PostConnect.m_Calls, ElementsAre( "register", "add 0", "remove 0", "unregister" ) );
}
