// Loading modules and driving their sub-tools through their whole life.
#include <gmock/gmock.h>

#include <QFile>
#include <QLibrary>
#include <QTemporaryDir>

#include "hostservices.h"
#include "keel0/keyvalues.h"
#include "subtools.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"
#include "testplugin.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{
QString PluginPath( const char *pName )
{
	return QString( "%1/lib%2_subtool.so" ).arg( TEST_PLUGIN_FOLDER, pName );
}

TestPluginRecord &RecordOf( const char *pName )
{
	QLibrary library( PluginPath( pName ) );
	const auto pGetRecord = reinterpret_cast<TestPluginGetRecordFn>( library.resolve( "TestPlugin_GetRecord" ) );
	EXPECT_NE( pGetRecord, nullptr ) << library.errorString().toStdString();
	return *pGetRecord();
}

class SubTools : public testing::Test
{
protected:
	SubTools()
		: m_Settings( "sub_tools" )
	{
		m_pTools = std::make_unique<CSubTools>( m_Host, [this]( const QString &line ) { m_Lines += line; } );
	}

	CFakeHost m_Host;
	KeyValues m_Settings;
	QStringList m_Lines;
	std::unique_ptr<CSubTools> m_pTools;
};

TEST_F( SubTools, DrivesAModuleThroughItsLifeInOrder )
{
	TestPluginRecord &record = RecordOf( "good" );
	record.m_Calls.clear();
	m_pTools->Load( { PluginPath( "good" ) }, m_Settings );
	EXPECT_TRUE( m_Lines.isEmpty() ) << m_Lines.join( '\n' ).toStdString();
	EXPECT_THAT( record.m_Calls, ElementsAre( "Connect", "InstallSchemaBindings SchemaSystem_001", "OnPostConnect",
									 "Initialise", "SetHost", "LoadSettings" ) );
	record.m_Calls.clear();
	CFakeConnection connection( "an engine" );
	m_pTools->ConnectionStateChanged( &connection );
	m_pTools->ConnectionEnded( &connection );
	m_pTools->ShutDown();
	m_pTools->ShutDown();
	EXPECT_THAT( record.m_Calls,
		ElementsAre( "ConnectionStateChanged 3", "ConnectionEnded an engine", "ShutDown", "Disconnect" ) );
}

TEST_F( SubTools, OffersEachSubToolUnderItsTitle )
{
	m_pTools->Load( { PluginPath( "good" ) }, m_Settings );
	ASSERT_EQ( m_pTools->All().size(), 1u );
	EXPECT_STREQ( m_pTools->All()[0]->m_Known.m_pTitle, "Show Budget" );
	EXPECT_STREQ( m_pTools->All()[0]->m_Known.m_pInterface, "Tessel_SubTool_001_ShowBudgetTool" );
	EXPECT_EQ( m_pTools->Find( "show budget" ), m_pTools->All()[0] );
	EXPECT_EQ( m_pTools->Find( "Show" ), nullptr );
	m_pTools->ShutDown();
	EXPECT_TRUE( m_pTools->All().empty() );
}

TEST_F( SubTools, HandsSettingsOverAndTakesThemBack )
{
	TestPluginRecord &record = RecordOf( "good" );
	m_Settings.FindKey( "Tessel_SubTool_001_ShowBudgetTool", true )->SetInt( "number", 41 );
	m_Settings.SetString( "Tessel_SubTool_001_Other", "stays" );
	m_pTools->Load( { PluginPath( "good" ) }, m_Settings );
	EXPECT_EQ( record.m_nKeptNumber, 41 );
	m_pTools->SaveSettings( m_Settings );
	const KeyValues *pSaved = m_Settings.FindKey( "Tessel_SubTool_001_ShowBudgetTool" );
	ASSERT_NE( pSaved, nullptr );
	EXPECT_EQ( pSaved->GetInt( "number" ), 42 );
	const KeyValues *pNested = pSaved->FindKey( "nested" );
	ASSERT_NE( pNested, nullptr );
	EXPECT_STREQ( pNested->GetString( "key" ), "value" );
	EXPECT_STREQ( m_Settings.GetString( "Tessel_SubTool_001_Other" ), "stays" );
	EXPECT_EQ( m_Settings.GetCount(), 2 );
}

TEST_F( SubTools, HandsAnEmptyTreeOverWhenNothingIsKept )
{
	TestPluginRecord &record = RecordOf( "good" );
	record.m_nKeptNumber = -1;
	m_Settings.SetString( "Tessel_SubTool_001_ShowBudgetTool", "no tree" );
	m_pTools->Load( { PluginPath( "good" ) }, m_Settings );
	EXPECT_EQ( record.m_nKeptNumber, 0 );
}

struct BadPlugin
{
	const char *m_pName;
	const char *m_pComplaint;
};

class BadPlugins
	: public SubTools
	, public testing::WithParamInterface<BadPlugin>
{
};

TEST_P( BadPlugins, AreReportedAndTheOthersGoOn )
{
	m_pTools->Load( { PluginPath( GetParam().m_pName ), PluginPath( "good" ) }, m_Settings );
	ASSERT_EQ( m_Lines.size(), 1 ) << m_Lines.join( '\n' ).toStdString();
	EXPECT_THAT( m_Lines[0].toStdString(), HasSubstr( GetParam().m_pName ) );
	EXPECT_THAT( m_Lines[0].toStdString(), HasSubstr( GetParam().m_pComplaint ) );
	EXPECT_FALSE( m_Lines[0].contains( '\n' ) );
	ASSERT_EQ( m_pTools->All().size(), 1u );
	EXPECT_NE( m_pTools->Find( "Show Budget" ), nullptr );
}

INSTANTIATE_TEST_SUITE_P(, BadPlugins,
	testing::Values( BadPlugin{ "absent", "absent_subtool.so: there is no such file" },
		BadPlugin{ "nofactory", "does not export CreateInterface" },
		BadPlugin{ "unknown", "no sub-tool that this console knows" }, BadPlugin{ "nosubtool", "is no sub-tool" },
		BadPlugin{ "refusesconnect", "could not connect" } ) );

TEST_F( SubTools, ReportsAFileThatIsNoLibrary )
{
	QTemporaryDir folder;
	const QString path = folder.filePath( "libtext_subtool.so" );
	QFile file( path );
	ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
	file.write( "just a text\n" );
	file.close();
	m_pTools->Load( { path }, m_Settings );
	ASSERT_EQ( m_Lines.size(), 1 );
	EXPECT_EQ( m_Lines[0], QString( "cannot load %1: file too short" ).arg( path ) );
	EXPECT_TRUE( m_pTools->All().empty() );
}

TEST_F( SubTools, LeavesASubToolOutThatFailsToInitialiseButDisconnectsIt )
{
	TestPluginRecord &record = RecordOf( "failsinitialise" );
	record.m_Calls.clear();
	m_pTools->Load( { PluginPath( "failsinitialise" ) }, m_Settings );
	ASSERT_EQ( m_Lines.size(), 1 );
	EXPECT_THAT( m_Lines[0].toStdString(), HasSubstr( "failed to initialise (result 5)" ) );
	EXPECT_TRUE( m_pTools->All().empty() );
	m_pTools->SaveSettings( m_Settings );
	EXPECT_EQ( m_Settings.GetCount(), 0 );
	m_pTools->ShutDown();
	EXPECT_THAT( record.m_Calls, ElementsAre( "Connect", "InstallSchemaBindings SchemaSystem_001", "OnPostConnect",
									 "Initialise", "Disconnect" ) );
}

TEST_F( SubTools, DisconnectsAModuleThatRefusedToConnect )
{
	TestPluginRecord &record = RecordOf( "refusesconnect" );
	record.m_Calls.clear();
	m_pTools->Load( { PluginPath( "refusesconnect" ) }, m_Settings );
	EXPECT_THAT( record.m_Calls, ElementsAre( "Connect", "Disconnect" ) );
}

TEST_F( SubTools, LoadsAFileOnceAndUsesTheFirstOfTwoModulesWithTheSameSubTool )
{
	QTemporaryDir folder;
	const QString copy = folder.filePath( "libcopy_subtool.so" );
	const QString link = folder.filePath( "liblink_subtool.so" );
	ASSERT_TRUE( QFile::copy( PluginPath( "good" ), copy ) );
	ASSERT_TRUE( QFile::link( PluginPath( "good" ), link ) );
	m_pTools->Load( { PluginPath( "good" ), PluginPath( "good" ), link, copy }, m_Settings );
	EXPECT_EQ( m_pTools->All().size(), 1u );
	ASSERT_EQ( m_Lines.size(), 1 );
	EXPECT_THAT( m_Lines[0].toStdString(), HasSubstr( "libcopy_subtool.so is not used" ) );
}

TEST_F( SubTools, FindsTheModulesOfAFolderByTheirNames )
{
	QTemporaryDir folder;
	for ( const char *pName :
		{ "libb_subtool.so", "liba_subtool.so", "libc.so", "a_subtool.so", "liba_subtool.so.bak" } )
	{
		QFile file( folder.filePath( pName ) );
		ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
	}
	EXPECT_EQ( CSubTools::FindPlugins( folder.path() ),
		QStringList( { folder.filePath( "liba_subtool.so" ), folder.filePath( "libb_subtool.so" ) } ) );
	EXPECT_TRUE( CSubTools::FindPlugins( folder.filePath( "nowhere" ) ).isEmpty() );
}

class CCallback final : public IPostConnectCallback
{
public:
	int OnPostConnect() override
	{
		m_nCalls++;
		return m_nResult;
	}
	int m_nCalls = 0;
	int m_nResult = 0;
};

IPostConnectService &PostConnectService()
{
	return *static_cast<IPostConnectService *>(
		CHostServices::CreateInterface( CHostServices::POST_CONNECT_NAME, nullptr ) );
}

TEST( HostServices, AreFoundByTheirExactNamesOnly )
{
	int nCode = -1;
	EXPECT_EQ( CHostServices::CreateInterface( "SchemaSystem_001", &nCode ), nullptr ) << "there are no services yet";
	EXPECT_EQ( nCode, 1 );
	CHostServices services;
	EXPECT_NE( CHostServices::CreateInterface( "SchemaSystem_001", &nCode ), nullptr );
	EXPECT_EQ( nCode, 0 );
	EXPECT_NE( CHostServices::CreateInterface( "TesselPostConnect_001", nullptr ), nullptr );
	EXPECT_EQ( CHostServices::CreateInterface( "schemasystem_001", &nCode ), nullptr );
	EXPECT_EQ( nCode, 1 );
}

TEST( HostServices, CallACallbackUntilItIsDone )
{
	CHostServices services;
	CCallback done;
	CCallback waits;
	waits.m_nResult = 1;
	PostConnectService().RegisterCallback( &done );
	PostConnectService().RegisterCallback( &waits );
	services.RunPostConnectCallbacks();
	EXPECT_EQ( services.WaitingCallbacks(), 1u );
	waits.m_nResult = 0;
	services.RunPostConnectCallbacks();
	EXPECT_EQ( done.m_nCalls, 1 );
	EXPECT_EQ( waits.m_nCalls, 2 );
	EXPECT_EQ( services.WaitingCallbacks(), 0u );
}

TEST( HostServices, ForgetACallbackThatWasUnregistered )
{
	CHostServices services;
	CCallback callback;
	PostConnectService().RegisterCallback( &callback );
	PostConnectService().UnregisterCallback( &callback );
	services.RunPostConnectCallbacks();
	EXPECT_EQ( callback.m_nCalls, 0 );
}

TEST( HostServices, AllowBindingsOnceAllModulesAreConnected )
{
	CHostServices services;
	ISchemaSystem *pSchemaSystem = services.SchemaSystem();
	EXPECT_FALSE( pSchemaSystem->MayInstallBindings( "module" ) );
	services.RunPostConnectCallbacks();
	EXPECT_TRUE( pSchemaSystem->MayInstallBindings( "module" ) );
	EXPECT_FALSE( services.AreBindingsInstalled( "module" ) );
	pSchemaSystem->BindingsInstalled( "module" );
	EXPECT_TRUE( services.AreBindingsInstalled( "module" ) );
}
} // namespace
