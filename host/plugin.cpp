#include "plugin.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <array>

namespace
{
constexpr int PROPERTY_MODULE_NAME = 3;
constexpr uint32_t PROPERTY_KIND_STRING = 0;

struct BinaryProperty
{
	intptr_t m_nValue;
	uint32_t m_nKind;
};
using GetPropertyFn = int ( * )( int nKey, BinaryProperty *pProperty );
using InstallSchemaBindingsFn = bool ( * )( const char *pName, ISchemaSystem *pSchemaSystem );

QString Tr( const char *pText )
{
	return QCoreApplication::translate( "CPlugin", pText );
}
} // namespace

std::span<const KnownSubTool> KnownSubTools()
{
	static constexpr std::array known = {
		KnownSubTool{
			"Tessel_SubTool_001_ShowBudgetTool", "Show Budget", "game:tools/images/showbudgettool/showbudget.png" },
	};
	return known;
}

CPlugin::CPlugin( const QString &path )
	: m_Library( path )
{
	// A symbol that is missing shows now and not in the middle of the work.
	m_Library.setLoadHints( QLibrary::ResolveAllSymbolsHint );
}

CPlugin::~CPlugin()
{
	if ( m_SubTools.empty() )
		m_Library.unload();
}

std::unique_ptr<CPlugin> CPlugin::Load(
	const QString &path, std::span<const KnownSubTool> knownSubTools, QString &error )
{
	std::unique_ptr<CPlugin> pPlugin( new CPlugin( path ) );
	if ( !pPlugin->m_Library.load() )
	{
		error = Tr( "cannot load %1: %2" ).arg( path, pPlugin->m_Library.errorString() );
		return nullptr;
	}
	const auto pFactory = reinterpret_cast<CreateInterfaceFn>( pPlugin->m_Library.resolve( "CreateInterface" ) );
	if ( !pFactory )
	{
		error = Tr( "cannot use %1: it does not export CreateInterface" ).arg( path );
		return nullptr;
	}
	pPlugin->m_ModuleName = pPlugin->ReadModuleName();
	if ( !pPlugin->FindSubTools( pFactory, knownSubTools, error ) )
		return nullptr;
	return pPlugin;
}

bool CPlugin::FindSubTools( CreateInterfaceFn pFactory, std::span<const KnownSubTool> knownSubTools, QString &error )
{
	for ( const KnownSubTool &known : knownSubTools )
	{
		auto *pModule = static_cast<IExternalTesselSubTool *>( pFactory( known.m_pInterface, nullptr ) );
		if ( !pModule )
			continue;
		auto *pTool = dynamic_cast<ITesselSubTool *>( pModule );
		if ( !pTool )
		{
			error = Tr( "cannot use %1: its %2 is no sub-tool" ).arg( Path(), known.m_pInterface );
			return false;
		}
		m_SubTools.push_back( { known, pModule, pTool } );
	}
	if ( m_SubTools.empty() )
		error = Tr( "cannot use %1: it offers no sub-tool that this console knows" ).arg( Path() );
	return !m_SubTools.empty();
}

QString CPlugin::ReadModuleName()
{
	const auto pGetProperty = reinterpret_cast<GetPropertyFn>( m_Library.resolve( "BinaryProperties_GetValue" ) );
	BinaryProperty property{ 0, ~0u };
	if ( pGetProperty && pGetProperty( PROPERTY_MODULE_NAME, &property ) != 0 &&
		 property.m_nKind == PROPERTY_KIND_STRING && property.m_nValue != 0 )
		return QString::fromUtf8( reinterpret_cast<const char *>( property.m_nValue ) );
	return QFileInfo( Path() ).fileName();
}

bool CPlugin::InstallSchemaBindings( const char *pName, ISchemaSystem *pSchemaSystem )
{
	const auto pInstall = reinterpret_cast<InstallSchemaBindingsFn>( m_Library.resolve( "InstallSchemaBindings" ) );
	return !pInstall || pInstall( pName, pSchemaSystem );
}
