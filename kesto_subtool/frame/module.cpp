// The module's static objects and its five exports.
#include <array>

#include "frame/binaryproperties.h"
#include "frame/interfaceregistry.h"
#include "frame/moduleframe.h"
#include "frame/showbudgettool.h"
#include "frame/staticinit.h"

// Callers have their own declarations of the records and functions: the pointer that dlsym gives is called as another
// type than it is defined with here, which the sanitizer need not report.
#if defined( __clang__ )
#define MODULE_EXPORT extern "C" __attribute__( ( visibility( "default" ), no_sanitize( "function" ) ) )
#else
#define MODULE_EXPORT extern "C" __attribute__( ( visibility( "default" ) ) )
#endif

namespace
{
constinit CStaticInitState g_StaticInit;
constinit CInterfaceRegistry g_Interfaces;
constinit CSchemaRegistry g_SchemaRegistry;
constinit std::array<ServiceConnection, 2> g_Services = { {
	{ CModuleFrame::POST_CONNECT_NAME },
	{ CSchemaBindings::SCHEMA_SYSTEM_NAME },
} };

constinit COrderedStatic<CModuleFrame> g_Frame( g_StaticInit, 1 << 0 );
constinit COrderedStatic<CShowBudgetTool> g_Tool( g_StaticInit, 1 << 1 );

void ConstructFrame()
{
	ORDERED_CONSTRUCT( g_Frame, CServiceConnections( g_Services ), g_SchemaRegistry );
}

void ConstructTool()
{
	ConstructFrame();
	ORDERED_CONSTRUCT( g_Tool, g_Frame.Get() );
}

const COrderedConstructor g_FrameConstructor( g_Frame, &ConstructFrame );
const COrderedConstructor g_ToolConstructor( g_Tool, &ConstructTool );

void *GetTool()
{
	return static_cast<IExternalTesselSubTool *>( &g_Tool.Get() );
}

const CInterfaceRegistration g_ToolRegistration( g_Interfaces, &GetTool, "Tessel_SubTool_001_ShowBudgetTool" );
} // namespace

MODULE_EXPORT void *CreateInterface( const char *pName, int *pReturnCode )
{
	return g_Interfaces.Create( pName, pReturnCode );
}

MODULE_EXPORT int BinaryProperties_GetValue( int nKey, BinaryProperty *pResult )
{
	return GetBinaryProperty( g_StaticInit, g_Tool.Address(), nKey, pResult );
}

MODULE_EXPORT int GetResourceManifestCount()
{
	return g_Frame.Get().ResourceManifests().Count();
}

MODULE_EXPORT int GetResourceManifests( int nMaxCount, void **ppManifests, void *pContext )
{
	return g_Frame.Get().ResourceManifests().Get( nMaxCount, ppManifests, pContext );
}

MODULE_EXPORT bool InstallSchemaBindings( const char *pName, ISchemaSystem *pSchemaSystem )
{
	return g_Frame.Get().SchemaBindings().Install( pName, pSchemaSystem );
}
