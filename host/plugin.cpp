#include "plugin.h"

#include <QFileInfo>

#include <array>

namespace
{
using InstallSchemaBindingsFn = bool ( * )( const char *pName, ISchemaSystem *pSchemaSystem );

// What the system says of a file that it does not load. The toolkit puts the path in front of that, twice.
QString WhyNotLoaded( const QLibrary &library )
{
	const QString path = library.fileName();
	QString reason = library.errorString();
	for ( const QString &front : { QStringLiteral( "Cannot load library %1: (" ).arg( path ), path + ": " } )
		if ( reason.startsWith( front ) )
			reason.remove( 0, front.size() );
	if ( reason.endsWith( ')' ) && reason.count( '(' ) < reason.count( ')' ) )
		reason.chop( 1 );
	return reason;
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
	// The toolkit would look for it under other names, too.
	if ( !QFileInfo( path ).isFile() )
	{
		error = tr( "cannot load %1: there is no such file" ).arg( path );
		return nullptr;
	}
	std::unique_ptr<CPlugin> pPlugin( new CPlugin( path ) );
	if ( !pPlugin->m_Library.load() )
	{
		error = tr( "cannot load %1: %2" ).arg( path, WhyNotLoaded( pPlugin->m_Library ) );
		return nullptr;
	}
	const auto pFactory = reinterpret_cast<CreateInterfaceFn>( pPlugin->m_Library.resolve( "CreateInterface" ) );
	if ( !pFactory )
	{
		error = tr( "cannot use %1: it does not export CreateInterface" ).arg( path );
		return nullptr;
	}
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
			error = tr( "cannot use %1: its %2 is no sub-tool" ).arg( Path(), known.m_pInterface );
			return false;
		}
		m_SubTools.push_back( { known, pModule, pTool } );
	}
	if ( m_SubTools.empty() )
		error = tr( "cannot use %1: it offers no sub-tool that this console knows" ).arg( Path() );
	return !m_SubTools.empty();
}

bool CPlugin::InstallSchemaBindings( const char *pName, ISchemaSystem *pSchemaSystem )
{
	const auto pInstall = reinterpret_cast<InstallSchemaBindingsFn>( m_Library.resolve( "InstallSchemaBindings" ) );
	return !pInstall || pInstall( pName, pSchemaSystem );
}
