// Modules for the loader's tests: one that works and, by a definition each, ones that fail in one way.
#include "testplugin.h"

#include <QLabel>
#include <QMessageBox>

#include <cstring>
#include <map>
#include <memory>

#include "keel0/keyvalues.h"
#include "keel0/memalloc.h"
#include "tessel/iexternalsubtool.h"
#include "tessel/ipostconnectservice.h"
#include "tessel/ischemasystem.h"
#include "tessel/itesselconnection.h"
#include "tessel/itesseldatareceived.h"
#include "tessel/itesselhost.h"
#include "tessel/itesselsubtool.h"

#define TEST_PLUGIN_EXPORT extern "C" __attribute__( ( visibility( "default" ) ) )

namespace
{
constexpr uint32_t SAMPLE = 0x50435055; // 'PCPU'
TestPluginRecord g_Record;

void Record( const std::string &call )
{
	g_Record.m_Calls.push_back( call );
}

class CPostConnect final : public IPostConnectCallback
{
public:
	int OnPostConnect() override
	{
		Record( "OnPostConnect" );
		return m_pSchemaSystem && m_pSchemaSystem->MayInstallBindings( "test" ) ? 0 : 1;
	}
	ISchemaSystem *m_pSchemaSystem = nullptr;
};
CPostConnect g_PostConnect;

class CWindow final
	: public QLabel
	, public ITesselDataReceived
{
	Q_OBJECT

public:
	Q_INVOKABLE bool OpenRecording( const QString &fileName )
	{
		Record( "OpenRecording " + fileName.toStdString() );
		return g_Record.m_bAsksAboutDamage ? AskAboutDamage() : g_Record.m_bTakesRecordings;
	}
	Q_INVOKABLE void ShowRecordedFrame( int nFrame ) { Record( "ShowRecordedFrame " + std::to_string( nFrame ) ); }
	Q_INVOKABLE void ShowSlowestRecordedFrame() { Record( "ShowSlowestRecordedFrame" ); }

	explicit CWindow( ITesselConnection *pConnection )
		: QLabel( "window of the test module" )
	{
		setWindowTitle( QString( "Show Budget - %1" ).arg( pConnection->GetName() ) );
		pConnection->RegisterReceiver( SAMPLE, 2, this );
	}
	bool OnDataReceived( ITesselConnection *, uint32_t, uint16_t, uint32_t, uint8_t *pBuffer ) override
	{
		g_pMemAlloc->Free( pBuffer );
		g_Record.m_nSamples++;
		return true;
	}

private:
	bool AskAboutDamage()
	{
		const auto offered = g_Record.m_bOffersToGoOn ? QMessageBox::Ok | QMessageBox::Cancel : QMessageBox::Cancel;
		return QMessageBox::warning( this, "File Error", "Truncated file\nTimings truncated", offered ) ==
			   QMessageBox::Ok;
	}
};

#ifdef TEST_PLUGIN_NO_SUB_TOOL
class CTool final : public IExternalTesselSubTool
#else
class CTool final
	: public IExternalTesselSubTool
	, public ITesselSubTool
#endif
{
public:
	bool Connect( CreateInterfaceFn pFactory ) override
	{
		Record( "Connect" );
		int nCode = 7;
		m_pService = static_cast<IPostConnectService *>( pFactory( "TesselPostConnect_001", &nCode ) );
		if ( !m_pService || nCode != 0 || pFactory( "Nobody_001", nullptr ) )
			Record( "bad factory" );
		if ( m_pService )
			m_pService->RegisterCallback( &g_PostConnect );
#ifdef TEST_PLUGIN_REFUSES_CONNECT
		return false;
#else
		return true;
#endif
	}
	void Disconnect() override
	{
		Record( "Disconnect" );
		m_pService->UnregisterCallback( &g_PostConnect );
	}
	void *FindInterface( const char * ) override
	{
		return nullptr;
	}
	int Initialise() override
	{
		Record( "Initialise" );
#ifdef TEST_PLUGIN_FAILS_INITIALISE
		return 5;
#else
		return 1;
#endif
	}
	void ShutDown() override
	{
		Record( "ShutDown" );
	}
	void Unused6() override {}
	const void *GetDependencies() override
	{
		return nullptr;
	}
	int GetFrameworkTier() override
	{
		return 3;
	}
	void ConnectInterface( CreateInterfaceFn, const char * ) override {}
	bool IsSingleton() override
	{
		return true;
	}
	int GetBuildKind() override
	{
		return 2;
	}

#ifndef TEST_PLUGIN_NO_SUB_TOOL
	void SetHost( ITesselHost *pHost, void * ) override
	{
		Record( "SetHost" );
		m_pHost = pHost;
	}
	void Unused2() override {}
	bool Open() override
	{
		Record( "Open" );
		ITesselConnection *pConnection = m_pHost->GetCurrentConnection();
		if ( !pConnection )
			return false;
		std::unique_ptr<CWindow> &pWindow = m_Windows[pConnection];
		if ( !pWindow )
			pWindow = std::make_unique<CWindow>( pConnection );
		pWindow->show();
		return true;
	}
	KeyValues *SaveSettings() override
	{
		Record( "SaveSettings" );
		m_pKept->SetInt( "number", m_pKept->GetInt( "number" ) + 1 );
		m_pKept->FindKey( "nested", true )->SetString( "key", "value" );
		return m_pKept.get();
	}
	KeyValues *LoadSettings( const KeyValues *pSettings ) override
	{
		Record( "LoadSettings" );
		m_pKept.reset( pSettings->MakeCopy() );
		g_Record.m_nKeptNumber = m_pKept->GetInt( "number" );
		return m_pKept.get();
	}
	void ConnectionEnded( ITesselConnection *pConnection ) override
	{
		Record( std::string( "ConnectionEnded " ) + pConnection->GetName() );
		m_Windows.erase( pConnection );
	}
	void Unused8() override {}
	void ConnectionStateChanged( ITesselConnection *pConnection ) override
	{
		Record( "ConnectionStateChanged " + std::to_string( pConnection->GetState() ) );
	}
	void Unused10() override {}
	void Unused11() override {}
	void Unused12() override {}
	bool NeedsConnection() override
	{
		return true;
	}
	bool IsHidden() override
	{
		return false;
	}
	void Unused15() override {}

private:
	ITesselHost *m_pHost = nullptr;
	std::unique_ptr<KeyValues> m_pKept;
	std::map<ITesselConnection *, std::unique_ptr<CWindow>> m_Windows;
#endif

private:
	IPostConnectService *m_pService = nullptr;
};
CTool g_Tool;
} // namespace

TEST_PLUGIN_EXPORT TestPluginRecord *TestPlugin_GetRecord()
{
	return &g_Record;
}

#ifndef TEST_PLUGIN_NO_FACTORY
TEST_PLUGIN_EXPORT void *CreateInterface( const char *pName, int * )
{
#ifdef TEST_PLUGIN_UNKNOWN
	return std::strcmp( pName, "Tessel_SubTool_001_Unheard" ) == 0 ? &g_Tool : nullptr;
#else
	return std::strcmp( pName, "Tessel_SubTool_001_ShowBudgetTool" ) == 0
			   ? static_cast<IExternalTesselSubTool *>( &g_Tool )
			   : nullptr;
#endif
}
#endif

TEST_PLUGIN_EXPORT bool InstallSchemaBindings( const char *pName, ISchemaSystem *pSchemaSystem )
{
	Record( std::string( "InstallSchemaBindings " ) + pName );
	g_PostConnect.m_pSchemaSystem = pSchemaSystem;
	pSchemaSystem->BindingsInstalled( "test" );
	return true;
}

#include "testplugin.moc"
