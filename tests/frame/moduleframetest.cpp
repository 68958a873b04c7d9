// Services, manifests, shutdown callbacks, and what the module gives the host when it is connected.
#include "frame/moduleframe.h"

#include <gmock/gmock.h>

#include "frame/fakeservices.h"

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNull;

namespace
{
int g_nManifests = 0;

// Manifests are just addresses to the module: these are distinct ones.
void *MakeManifest( void *pContext )
{
	g_nManifests++;
	return pContext ? pContext : &g_nManifests;
}

class ModuleFrameTest : public testing::Test
{
protected:
	ModuleFrameTest() { g_nManifests = 0; }

	const std::vector<std::string> &Calls() const { return m_Services.m_PostConnect.m_Calls; }

	CFakeServices m_Services;
	ServiceConnection m_Rows[3] = { { "TesselPostConnect_001" }, { "SchemaSystem_001" }, { "Unheard_001" } };
	CSchemaRegistry m_Registry;
	CModuleFrame m_Frame{ CServiceConnections( m_Rows ), m_Registry };
};
} // namespace

TEST_F( ModuleFrameTest, ConnectingAsksForEveryRowOfTheTable )
{
	m_Frame.Connect( &CFakeServices::Factory );
	EXPECT_THAT( m_Services.m_Asked, ElementsAre( "TesselPostConnect_001", "SchemaSystem_001", "Unheard_001" ) );
	EXPECT_EQ( m_Rows[0].m_pService, static_cast<IPostConnectService *>( &m_Services.m_PostConnect ) );
	EXPECT_EQ( m_Rows[1].m_pService, static_cast<ISchemaSystem *>( &m_Services.m_Schema ) );
	EXPECT_EQ( m_Rows[2].m_pService, nullptr );
}

TEST_F( ModuleFrameTest, AConnectedRowIsNotAskedForAgain )
{
	m_Frame.Connect( &CFakeServices::Factory );
	m_Services.m_Asked.clear();
	m_Frame.Connect( &CFakeServices::Factory );
	EXPECT_THAT( m_Services.m_Asked, ElementsAre( "Unheard_001" ) );
}

TEST_F( ModuleFrameTest, OneMoreInterfaceIsTheRowOfThatName )
{
	m_Frame.ConnectInterface( &CFakeServices::Factory, "SchemaSystem_001" );
	EXPECT_THAT( m_Services.m_Asked, ElementsAre( "SchemaSystem_001" ) );
	EXPECT_THAT( Calls(), IsEmpty() );
	m_Frame.ConnectInterface( &CFakeServices::Factory, "TesselPostConnect_001" );
	EXPECT_THAT( Calls(), ElementsAre( "register", "add 0" ) );
	m_Services.m_Asked.clear();
	m_Frame.ConnectInterface( &CFakeServices::Factory, "schemasystem_001" );
	m_Frame.ConnectInterface( &CFakeServices::Factory, nullptr );
	EXPECT_THAT( m_Services.m_Asked, IsEmpty() );
}

TEST_F( ModuleFrameTest, ANullFactoryConnectsNothing )
{
	m_Frame.Connect( nullptr );
	for ( const ServiceConnection &row : m_Rows )
		EXPECT_EQ( row.m_pService, nullptr );
	m_Frame.Disconnect( 1 );
}

TEST_F( ModuleFrameTest, TheCallbackIsRegisteredOncePerModule )
{
	m_Frame.Connect( &CFakeServices::Factory );
	m_Frame.Connect( &CFakeServices::Factory );
	m_Frame.ConnectInterface( &CFakeServices::Factory, "TesselPostConnect_001" );
	EXPECT_THAT( Calls(), ElementsAre( "register", "add 0" ) );
	EXPECT_EQ( m_Services.m_PostConnect.m_Callbacks.size(), 1u );
}

TEST_F( ModuleFrameTest, NothingIsRegisteredWithoutTheService )
{
	m_Services.m_bHasPostConnect = false;
	m_Frame.Connect( &CFakeServices::Factory );
	m_Frame.Disconnect( 1 );
	EXPECT_THAT( Calls(), IsEmpty() );
}

TEST_F( ModuleFrameTest, TheCallbackIsTakenBackWhenTheLastConnectionGoes )
{
	m_Frame.Connect( &CFakeServices::Factory );
	m_Frame.Connect( &CFakeServices::Factory );
	m_Frame.Connect( &CFakeServices::Factory );
	m_Services.m_PostConnect.m_Calls.clear();
	m_Frame.Disconnect( 2 );
	EXPECT_THAT( Calls(), IsEmpty() ) << "one is left";
	m_Frame.Disconnect( 1 );
	EXPECT_THAT( Calls(), ElementsAre( "remove 0", "unregister" ) );
	EXPECT_THAT( m_Services.m_PostConnect.m_Callbacks, IsEmpty() );
}

TEST_F( ModuleFrameTest, DisconnectingClearsTheServicePointers )
{
	m_Frame.Connect( &CFakeServices::Factory );
	m_Frame.Disconnect( 1 );
	for ( const ServiceConnection &row : m_Rows )
		EXPECT_EQ( row.m_pService, nullptr ) << row.m_pName;
	EXPECT_EQ( m_Frame.SchemaBindings().KeptSystem(), nullptr );
}

TEST_F( ModuleFrameTest, AfterAFullDisconnectALaterConnectRegistersAgain )
{
	m_Frame.Connect( &CFakeServices::Factory );
	m_Frame.Disconnect( 1 );
	m_Services.m_PostConnect.m_Calls.clear();
	m_Frame.Connect( &CFakeServices::Factory );
	EXPECT_THAT( Calls(), ElementsAre( "register", "add 0" ) );
	m_Frame.Disconnect( 1 );
	EXPECT_THAT( Calls(), ElementsAre( "register", "add 0", "remove 0", "unregister" ) );
}

TEST_F( ModuleFrameTest, ManifestsAreOfferedAndWithdrawn )
{
	m_Frame.ResourceManifests().Add( &MakeManifest );
	m_Frame.Connect( &CFakeServices::Factory );
	EXPECT_THAT( Calls(), ElementsAre( "register", "add 1" ) );
	EXPECT_THAT( m_Services.m_PostConnect.m_Manifests, ElementsAre( &g_nManifests ) );
	m_Frame.Disconnect( 1 );
	EXPECT_THAT( Calls(), ElementsAre( "register", "add 1", "remove 1", "unregister" ) );
	EXPECT_EQ( g_nManifests, 1 ) << "the same manifest is withdrawn that was offered";
}

TEST_F( ModuleFrameTest, TheCallbackInstallsTheBindingsInTheConnectedSchemaSystem )
{
	m_Frame.Connect( &CFakeServices::Factory );
	ASSERT_EQ( m_Services.m_PostConnect.m_Callbacks.size(), 1u );
	EXPECT_THAT( m_Services.m_Schema.m_Installed, IsEmpty() );
	EXPECT_EQ( m_Services.m_PostConnect.m_Callbacks[0]->OnPostConnect(), 0 );
	EXPECT_THAT( m_Services.m_Schema.m_Installed, ElementsAre( "kesto_subtool" ) );
}

TEST( ResourceManifests, AnEmptyListWritesNothing )
{
	CResourceManifestList list;
	EXPECT_EQ( list.Count(), 0 );
	void *manifests[2] = { &list, &list };
	EXPECT_EQ( list.Get( 2, manifests, nullptr ), 0 );
	EXPECT_THAT( manifests, Each( static_cast<void *>( &list ) ) );
	EXPECT_EQ( list.Get( 0, nullptr, nullptr ), 0 );
}

TEST( ResourceManifests, EachIsMadeOnItsFirstRequestAndKept )
{
	g_nManifests = 0;
	CResourceManifestList list;
	list.Add( &MakeManifest );
	list.Add( &MakeManifest );
	list.Add( &MakeManifest );
	EXPECT_EQ( list.Count(), 3 );
	EXPECT_EQ( g_nManifests, 0 );

	int nFirstContext = 0;
	int nSecondContext = 0;
	void *manifests[3] = {};
	EXPECT_EQ( list.Get( 2, manifests, &nFirstContext ), 2 );
	EXPECT_EQ( g_nManifests, 2 );
	EXPECT_THAT( manifests, ElementsAre( &nFirstContext, &nFirstContext, IsNull() ) );
	EXPECT_EQ( list.Get( 10, manifests, &nSecondContext ), 3 );
	EXPECT_EQ( g_nManifests, 3 );
	EXPECT_THAT( manifests, ElementsAre( &nFirstContext, &nFirstContext, &nSecondContext ) );
	EXPECT_EQ( list.Get( -1, manifests, nullptr ), 0 );
}

TEST( ShutdownCallbacks, RunNewestFirstAndOnce )
{
	CShutdownCallbacks callbacks;
	std::string order;
	callbacks.Add( [&] { order += "a"; } );
	callbacks.Add( [&] { order += "b"; } );
	callbacks.Run();
	EXPECT_EQ( order, "ba" );
	callbacks.Run();
	EXPECT_EQ( order, "ba" );
}

TEST( ShutdownCallbacks, EachIsOffTheListBeforeTheNextRuns )
{
	CShutdownCallbacks callbacks;
	std::string order;
	callbacks.Add( [&] { order += "a"; } );
	callbacks.Add(
		[&]
		{
			order += "b";
			callbacks.Run(); // runs what is left, not this one
			order += "c";
			callbacks.Add( [&] { order += "d"; } );
		} );
	callbacks.Run();
	EXPECT_EQ( order, "bacd" );
}
