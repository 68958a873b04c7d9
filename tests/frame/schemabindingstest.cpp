#include "frame/schemabindings.h"

#include <gmock/gmock.h>

#include <functional>

#include "frame/fakeservices.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
struct Call
{
	char m_chRegistrar = 0;
	ISchemaSystem *m_pSystem = nullptr;
	int m_nPass = 0;
	bool m_bReasonAsked = false;
};

// Registrars are plain functions; what they do is up to the test that runs.
std::vector<Call> g_Calls;
std::function<bool( const Call &, CUtlString * )> g_Behaviour;

template <char chRegistrar>
bool Register( ISchemaSystem &schemaSystem, int nPass, CUtlString *pFailureReason )
{
	g_Calls.push_back( { chRegistrar, &schemaSystem, nPass, pFailureReason != nullptr } );
	return g_Behaviour( g_Calls.back(), pFailureReason );
}

class SchemaBindingsTest : public testing::Test
{
protected:
	SchemaBindingsTest()
	{
		g_Calls.clear();
		g_Behaviour = []( const Call &, CUtlString * ) { return true; };
	}
	~SchemaBindingsTest() override { g_Behaviour = nullptr; }

	std::string Order() const
	{
		std::string order;
		for ( const Call &call : g_Calls )
			order += std::string( 1, call.m_chRegistrar ) + std::to_string( call.m_nPass ) + " ";
		return order;
	}

	CFakeSchemaSystem m_System;
	CSchemaRegistry m_Registry;
	CSchemaBindings m_Bindings{ m_Registry };
};
} // namespace

TEST_F( SchemaBindingsTest, AnyOtherNameIsRefusedAndNothingKept )
{
	for ( const char *pName : { "schemasystem_001", "SchemaSystem_002", "SchemaSystem_0011", "" } )
		EXPECT_FALSE( m_Bindings.Install( pName, &m_System ) ) << pName;
	EXPECT_FALSE( m_Bindings.Install( nullptr, &m_System ) );
	EXPECT_EQ( m_Bindings.KeptSystem(), nullptr );
	EXPECT_FALSE( m_Bindings.IsInstalled() );
	EXPECT_THAT( m_System.m_Installed, IsEmpty() );
}

TEST_F( SchemaBindingsTest, InstallingWithoutRegistrarsTellsTheSystemTheModulesName )
{
	EXPECT_TRUE( m_Bindings.Install( "SchemaSystem_001", &m_System ) );
	EXPECT_TRUE( m_Bindings.IsInstalled() );
	EXPECT_EQ( m_Bindings.KeptSystem(), &m_System );
	EXPECT_THAT( m_System.m_Installed, ElementsAre( "kesto_subtool" ) );
	EXPECT_THAT( m_System.m_Asked, IsEmpty() );
}

TEST_F( SchemaBindingsTest, ASecondInstallIsTrueWithoutRegisteringAgain )
{
	const CSchemaRegistration a( m_Registry, &Register<'a'> );
	EXPECT_TRUE( m_Bindings.Install( "SchemaSystem_001", &m_System ) );
	g_Calls.clear();
	CFakeSchemaSystem other;
	EXPECT_TRUE( m_Bindings.Install( "SchemaSystem_001", &other ) );
	EXPECT_THAT( g_Calls, IsEmpty() );
	EXPECT_EQ( m_Bindings.KeptSystem(), &m_System );
	EXPECT_THAT( other.m_Installed, IsEmpty() );
	EXPECT_FALSE( m_Bindings.Install( "SchemaSystem_002", &other ) ) << "the name counts first";
}

TEST_F( SchemaBindingsTest, EveryRegistrarIsCalledInEachOfFourPasses )
{
	const CSchemaRegistration a( m_Registry, &Register<'a'> );
	const CSchemaRegistration b( m_Registry, &Register<'b'> );
	EXPECT_TRUE( m_Bindings.Install( "SchemaSystem_001", &m_System ) );
	EXPECT_EQ( Order(), "b0 a0 b1 a1 b2 a2 b3 a3 " );
	for ( const Call &call : g_Calls )
	{
		EXPECT_EQ( call.m_pSystem, &m_System );
		EXPECT_FALSE( call.m_bReasonAsked );
	}
}

TEST_F( SchemaBindingsTest, OnlyRegistrarsThatAreNotDoneAreCalledAgain )
{
	const CSchemaRegistration a( m_Registry, &Register<'a'> );
	const CSchemaRegistration b( m_Registry, &Register<'b'> );
	int nRefusals = 0;
	g_Behaviour = [&]( const Call &call, CUtlString * )
	{ return call.m_chRegistrar != 'b' || call.m_nPass != 1 || ++nRefusals > 2; };
	EXPECT_TRUE( m_Bindings.Install( "SchemaSystem_001", &m_System ) );
	EXPECT_EQ( Order(), "b0 a0 b1 a1 b1 b1 b2 a2 b3 a3 " );
}

TEST_F( SchemaBindingsTest, ARegistrarMayBeDoneInTheVeryLastRound )
{
	const CSchemaRegistration a( m_Registry, &Register<'a'> );
	g_Behaviour = []( const Call &call, CUtlString * ) { return call.m_nPass != 2 || call.m_bReasonAsked; };
	EXPECT_TRUE( m_Bindings.Install( "SchemaSystem_001", &m_System ) );
	EXPECT_EQ( g_Calls.size(), 1u + 1u + 999u + 1u );
	EXPECT_THAT( m_System.m_Installed, ElementsAre( "kesto_subtool" ) );
}

TEST_F( SchemaBindingsTest, ARegistrarThatIsNeverDoneStopsTheProcessWithItsReason )
{
	const CSchemaRegistration a( m_Registry, &Register<'a'> );
	const CSchemaRegistration b( m_Registry, &Register<'b'> );
	g_Behaviour = []( const Call &call, CUtlString *pFailureReason )
	{
		if ( call.m_chRegistrar != 'a' || call.m_nPass != 1 )
			return true;
		if ( pFailureReason )
			pFailureReason->Set( "base type missing" );
		return false;
	};
	CExpectFatalErrors errors;
	EXPECT_FALSE( m_Bindings.Install( "SchemaSystem_001", &m_System ) );
	EXPECT_THAT(
		errors.Texts(), ElementsAre( "FATAL ERROR: unable to register all schema data: base type missing\n" ) );
	EXPECT_EQ( g_Calls.size(), 2u + 1u + 999u ) << "no pass comes after the one that failed";
	for ( size_t i = 0; i < g_Calls.size(); i++ )
		EXPECT_EQ( g_Calls[i].m_bReasonAsked, i + 1 == g_Calls.size() );
	EXPECT_FALSE( m_Bindings.IsInstalled() );
	EXPECT_THAT( m_System.m_Installed, IsEmpty() );
}

TEST_F( SchemaBindingsTest, AFailureWithoutAReasonSaysSo )
{
	const CSchemaRegistration a( m_Registry, &Register<'a'> );
	g_Behaviour = []( const Call &, CUtlString * ) { return false; };
	CExpectFatalErrors errors;
	EXPECT_FALSE( m_Bindings.Install( "SchemaSystem_001", &m_System ) );
	EXPECT_THAT(
		errors.Texts(), ElementsAre( "FATAL ERROR: unable to register all schema data: <no failure reason set>\n" ) );
}

TEST_F( SchemaBindingsTest, TheCallbackInstallsInAKeptSystemThatAllowsIt )
{
	const CSchemaRegistration a( m_Registry, &Register<'a'> );
	CSchemaInstallCallback callback( m_Bindings );
	m_Bindings.Keep( &m_System );
	EXPECT_EQ( callback.OnPostConnect(), 0 );
	EXPECT_EQ( Order(), "a0 a1 a2 a3 " );
	EXPECT_THAT( m_System.m_Asked, ElementsAre( "kesto_subtool" ) );
	EXPECT_THAT( m_System.m_Installed, ElementsAre( "kesto_subtool" ) );
	EXPECT_EQ( callback.OnPostConnect(), 0 );
	EXPECT_EQ( g_Calls.size(), 4u ) << "registered once";
}

TEST_F( SchemaBindingsTest, TheCallbackIsNotDoneWhileTheSystemRefuses )
{
	CSchemaInstallCallback callback( m_Bindings );
	m_Bindings.Keep( &m_System );
	m_System.m_bMayInstall = false;
	EXPECT_EQ( callback.OnPostConnect(), 1 );
	EXPECT_FALSE( m_Bindings.IsInstalled() );
	m_System.m_bMayInstall = true;
	EXPECT_EQ( callback.OnPostConnect(), 0 );
	EXPECT_TRUE( m_Bindings.IsInstalled() );
}

TEST_F( SchemaBindingsTest, TheCallbackIsNotDoneWithoutASystem )
{
	CSchemaInstallCallback callback( m_Bindings );
	EXPECT_EQ( callback.OnPostConnect(), 1 );
	m_Bindings.Keep( nullptr );
	EXPECT_EQ( callback.OnPostConnect(), 1 );
}

TEST_F( SchemaBindingsTest, ASystemThatWasKeptFirstStays )
{
	CFakeSchemaSystem other;
	m_Bindings.Keep( &m_System );
	m_Bindings.Keep( &other );
	EXPECT_EQ( m_Bindings.KeptSystem(), &m_System );
	m_Bindings.Forget( &other );
	EXPECT_EQ( m_Bindings.KeptSystem(), &m_System );
	m_Bindings.Forget( &m_System );
	EXPECT_EQ( m_Bindings.KeptSystem(), nullptr );
}
