#include "subtools.h"

#include <QDir>
#include <QFileInfo>

#include "keel0/keyvalues.h"

namespace
{
// A copy of `tree` under another name.
KeyValues *CopyAs( const char *pName, const KeyValues &tree )
{
	auto *pCopy = new KeyValues( pName );
	for ( int i = 0; i < tree.GetCount(); i++ )
	{
		const KeyValues *pEntry = tree.GetEntry( i );
		if ( pEntry->IsSubTree() )
			pCopy->AddSubTree( pEntry->MakeCopy() );
		else
			pCopy->SetString( pEntry->GetName(), pEntry->GetValue() );
	}
	return pCopy;
}
} // namespace

CSubTools::CSubTools( ITesselHost &host, ReportFn report )
	: m_Host( host )
	, m_Report( std::move( report ) )
{
}

CSubTools::~CSubTools()
{
	ShutDown();
}

QStringList CSubTools::FindPlugins( const QString &folder )
{
	QStringList paths;
	const QDir directory( folder );
	for ( const QString &name : directory.entryList( { "lib*_subtool.so" }, QDir::Files, QDir::Name ) )
		paths += directory.filePath( name );
	return paths;
}

template <typename Function>
void CSubTools::ForEachRunning( Function function ) const
{
	for ( const std::unique_ptr<CPlugin> &pPlugin : m_Plugins )
		for ( SubTool &tool : pPlugin->SubTools() )
			if ( tool.m_bInitialised )
				function( tool );
}

void CSubTools::Load( const QStringList &paths, const KeyValues &settings )
{
	for ( const QString &path : paths )
		LoadOne( path );
	m_Services.RunPostConnectCallbacks();
	for ( const std::unique_ptr<CPlugin> &pPlugin : m_Plugins )
		for ( SubTool &tool : pPlugin->SubTools() )
			Initialise( *pPlugin, tool, settings );
}

void CSubTools::LoadOne( const QString &path )
{
	const QString canonicalPath = QFileInfo( path ).canonicalFilePath();
	if ( IsLoaded( canonicalPath ) )
		return;
	QString error;
	std::unique_ptr<CPlugin> pPlugin =
		CPlugin::Load( canonicalPath.isEmpty() ? path : canonicalPath, KnownSubTools(), error );
	if ( !pPlugin )
	{
		m_Report( error );
		return;
	}
	DropDuplicates( *pPlugin );
	if ( Connect( *pPlugin ) )
		m_Plugins.push_back( std::move( pPlugin ) );
}

bool CSubTools::IsLoaded( const QString &canonicalPath ) const
{
	for ( const std::unique_ptr<CPlugin> &pPlugin : m_Plugins )
		if ( pPlugin->Path() == canonicalPath )
			return true;
	return false;
}

void CSubTools::DropDuplicates( CPlugin &plugin )
{
	for ( const std::unique_ptr<CPlugin> &pOther : m_Plugins )
	{
		for ( const SubTool &tool : pOther->SubTools() )
		{
			const auto isSame = [&tool]( const SubTool &candidate )
			{ return candidate.m_Known.m_pInterface == tool.m_Known.m_pInterface; };
			if ( std::erase_if( plugin.SubTools(), isSame ) > 0 )
				m_Report( tr( "%1 is not used for \"%2\": %3 gives it already" )
							  .arg( plugin.Path(), tool.m_Known.m_pTitle, pOther->Path() ) );
		}
	}
}

bool CSubTools::Connect( CPlugin &plugin )
{
	std::vector<SubTool> &tools = plugin.SubTools();
	for ( auto tool = tools.begin(); tool != tools.end(); )
	{
		if ( tool->m_pModule->Connect( &CHostServices::CreateInterface ) )
		{
			++tool;
			continue;
		}
		m_Report( tr( "\"%1\" of %2 could not connect to the console" ).arg( tool->m_Known.m_pTitle, plugin.Path() ) );
		tool->m_pModule->Disconnect();
		tool = tools.erase( tool );
	}
	if ( tools.empty() )
		return false;
	if ( !plugin.InstallSchemaBindings( CHostServices::SCHEMA_SYSTEM_NAME, m_Services.SchemaSystem() ) )
		m_Report( tr( "%1 did not take the schema system" ).arg( plugin.Path() ) );
	return true;
}

void CSubTools::Initialise( const CPlugin &plugin, SubTool &tool, const KeyValues &settings )
{
	if ( const int nResult = tool.m_pModule->Initialise(); nResult != 1 )
	{
		m_Report( tr( "\"%1\" of %2 failed to initialise (result %3)" )
					  .arg( tool.m_Known.m_pTitle, plugin.Path(), QString::number( nResult ) ) );
		return;
	}
	tool.m_bInitialised = true;
	tool.m_pTool->SetHost( &m_Host, nullptr );
	const KeyValues *pKept = settings.FindKey( tool.m_Known.m_pInterface );
	const KeyValues empty( tool.m_Known.m_pInterface );
	tool.m_pTool->LoadSettings( pKept && pKept->IsSubTree() ? pKept : &empty );
}

std::vector<const SubTool *> CSubTools::All() const
{
	std::vector<const SubTool *> all;
	ForEachRunning( [&all]( const SubTool &tool ) { all.push_back( &tool ); } );
	return all;
}

const SubTool *CSubTools::Find( const QString &title ) const
{
	for ( const SubTool *pTool : All() )
		if ( title.compare( QLatin1String( pTool->m_Known.m_pTitle ), Qt::CaseInsensitive ) == 0 )
			return pTool;
	return nullptr;
}

void CSubTools::SaveSettings( KeyValues &settings ) const
{
	ForEachRunning(
		[&settings]( const SubTool &tool )
		{
			if ( const KeyValues *pKept = tool.m_pTool->SaveSettings() )
				settings.AddSubTree( CopyAs( tool.m_Known.m_pInterface, *pKept ) );
		} );
}

void CSubTools::ConnectionStateChanged( ITesselConnection *pConnection ) const
{
	ForEachRunning( [pConnection]( const SubTool &tool ) { tool.m_pTool->ConnectionStateChanged( pConnection ); } );
}

void CSubTools::ConnectionEnded( ITesselConnection *pConnection ) const
{
	ForEachRunning( [pConnection]( const SubTool &tool ) { tool.m_pTool->ConnectionEnded( pConnection ); } );
}

void CSubTools::ShutDown()
{
	while ( !m_Plugins.empty() )
	{
		CPlugin &plugin = *m_Plugins.back();
		for ( SubTool &tool : plugin.SubTools() )
		{
			if ( std::exchange( tool.m_bInitialised, false ) )
				tool.m_pModule->ShutDown();
			tool.m_pModule->Disconnect();
		}
		m_Plugins.pop_back();
	}
}
