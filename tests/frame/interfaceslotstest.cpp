// Modules and hosts that were built apart meet in these interfaces, so every operation has its place for good.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "keel0/memalloc.h"
#include "tessel/iexternalsubtool.h"
#include "tessel/ipostconnectservice.h"
#include "tessel/ischemasystem.h"
#include "tessel/itesselconnection.h"
#include "tessel/itesseldatareceived.h"
#include "tessel/itesselhost.h"
#include "tessel/itesselsubtool.h"

namespace
{
// The place of a virtual function, counted from 1. A pointer to one holds its offset in the table plus 1.
template <typename MemberFunction>
ptrdiff_t PlaceOf( MemberFunction pFunction )
{
	ptrdiff_t words[2];
	static_assert( sizeof( pFunction ) == sizeof( words ) );
	std::memcpy( words, &pFunction, sizeof( words ) );
	return ( words[0] - 1 ) / static_cast<ptrdiff_t>( sizeof( void * ) ) + 1;
}
} // namespace

TEST( InterfaceSlots, OfAModuleAreInTheirPlaces )
{
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::Connect ), 1 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::Disconnect ), 2 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::FindInterface ), 3 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::Initialise ), 4 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::ShutDown ), 5 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::Unused6 ), 6 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::GetDependencies ), 7 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::GetFrameworkTier ), 8 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::ConnectInterface ), 9 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::IsSingleton ), 10 );
	EXPECT_EQ( PlaceOf( &IExternalTesselSubTool::GetBuildKind ), 11 );
}

TEST( InterfaceSlots, OfASubToolAreInTheirPlaces )
{
	EXPECT_EQ( PlaceOf( &ITesselSubTool::SetHost ), 1 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::Unused2 ), 2 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::Open ), 3 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::SaveSettings ), 4 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::LoadSettings ), 5 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::Unused6 ), 6 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::ConnectionEnded ), 7 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::Unused8 ), 8 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::ConnectionStateChanged ), 9 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::Unused10 ), 10 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::Unused11 ), 11 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::Unused12 ), 12 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::NeedsConnection ), 13 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::IsHidden ), 14 );
	EXPECT_EQ( PlaceOf( &ITesselSubTool::Unused15 ), 15 );
}

TEST( InterfaceSlots, OfTheHostAndItsServicesAreInTheirPlaces )
{
	EXPECT_EQ( PlaceOf( &ITesselHost::GetCurrentConnection ), 1 );
	EXPECT_EQ( PlaceOf( &ITesselHost::IsDarkStyle ), 2 );
	EXPECT_EQ( PlaceOf( &ITesselHost::GetUIScale ), 3 );
	EXPECT_EQ( PlaceOf( &ITesselConnection::GetName ), 1 );
	EXPECT_EQ( PlaceOf( &ITesselConnection::RegisterReceiver ), 2 );
	EXPECT_EQ( PlaceOf( &ITesselConnection::GetState ), 3 );
	EXPECT_EQ( PlaceOf( &ITesselConnection::SendChunk ), 4 );
	EXPECT_EQ( PlaceOf( &ITesselDataReceived::OnDataReceived ), 1 );
	EXPECT_EQ( PlaceOf( &ISchemaSystem::MayInstallBindings ), 1 );
	EXPECT_EQ( PlaceOf( &ISchemaSystem::BindingsInstalled ), 2 );
	EXPECT_EQ( PlaceOf( &IPostConnectCallback::OnPostConnect ), 1 );
	EXPECT_EQ( PlaceOf( &IPostConnectService::RegisterCallback ), 1 );
	EXPECT_EQ( PlaceOf( &IPostConnectService::UnregisterCallback ), 2 );
	EXPECT_EQ( PlaceOf( &IPostConnectService::AddResourceManifests ), 3 );
	EXPECT_EQ( PlaceOf( &IPostConnectService::RemoveResourceManifests ), 4 );
	EXPECT_EQ( PlaceOf( &IMemAlloc::Alloc ), 1 );
	EXPECT_EQ( PlaceOf( &IMemAlloc::Free ), 2 );
}
