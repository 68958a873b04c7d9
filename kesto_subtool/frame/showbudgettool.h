// The "Show Budget" sub-tool: one window for each connection.
#pragma once

#include <QPointer>
#include <cstdint>
#include <memory>
#include <vector>

#include "keel0/keyvalues.h"
#include "keel0/utlrbtree.h"
#include "showbudget/ibudgetwindowowner.h"
#include "tessel/iexternalsubtool.h"
#include "tessel/itesselsubtool.h"

class CModuleFrame;
class CQBudgetWidget;

// The module holds exactly one, as a static object. The host drives it through the two interfaces in this order:
// Connect, Initialise, SetHost, LoadSettings, then the windows' life, SaveSettings, ShutDown, Disconnect.
class CShowBudgetTool final
	: public IExternalTesselSubTool
	, public ITesselSubTool
	, private IBudgetWindowOwner
{
public:
	using MakeWindowFn = CQBudgetWidget *(*)( ITesselConnection &connection, IBudgetWindowOwner &owner );

	// frame must outlive the tool. pMakeWindow, for tests, makes the windows; null when it could not.
	explicit CShowBudgetTool( CModuleFrame &frame, MakeWindowFn pMakeWindow = &MakeWindow );
	~CShowBudgetTool();
	CShowBudgetTool( const CShowBudgetTool & ) = delete;
	CShowBudgetTool &operator=( const CShowBudgetTool & ) = delete;

	// IAppSystem
	bool Connect( CreateInterfaceFn pFactory ) override;
	void Disconnect() override;
	void *FindInterface( const char *pName ) override;
	int Initialise() override;
	void ShutDown() override;
	void Unused6() override {} // of both interfaces
	const void *GetDependencies() override { return nullptr; }
	int GetFrameworkTier() override { return 3; }
	void ConnectInterface( CreateInterfaceFn pFactory, const char *pName ) override;
	bool IsSingleton() override { return true; }
	int GetBuildKind() override { return 2; }

	// ITesselSubTool
	void SetHost( ITesselHost *pHost, void *pSecondHost ) override;
	void Unused2() override {}
	bool Open() override;
	KeyValues *SaveSettings() override;
	KeyValues *LoadSettings( const KeyValues *pSettings ) override;
	void ConnectionEnded( ITesselConnection *pConnection ) override;
	void Unused8() override {}
	void ConnectionStateChanged( ITesselConnection *pConnection ) override;
	void Unused10() override {}
	void Unused11() override {}
	void Unused12() override {}
	bool NeedsConnection() override { return true; }
	bool IsHidden() override { return false; }
	void Unused15() override {}

	CQBudgetWidget *FindWindow( ITesselConnection *pConnection ) const; // null when there is none

private:
	using WindowMap = CUtlRBTree<ITesselConnection *, QPointer<CQBudgetWidget>>;

	static CQBudgetWidget *MakeWindow( ITesselConnection &connection, IBudgetWindowOwner &owner );
	static void OnApplicationEnds();

	// IBudgetWindowOwner
	KeyValues *GetSettings() override { return m_pSettings.get(); }
	const ITesselHost &GetHost() const override { return *m_pHost; }

	CQBudgetWidget *FindOrCreateWindow( ITesselConnection &connection );
	void StartQt();
	void StopQt();
	void DeleteWindows();
	void DeleteWindow( CQBudgetWidget &window );

	CModuleFrame &m_Frame;
	MakeWindowFn m_pMakeWindow;
	ITesselHost *m_pHost = nullptr;
	void *m_pSecondHost = nullptr; // kept for the host's sake; nothing here uses it
	int32_t m_nConnections = 0;    // times that the host connected this object
	WindowMap m_Windows;
	std::vector<QPointer<CQBudgetWidget>> m_LeavingWindows; // not in the map any more, and deleted later
	std::unique_ptr<KeyValues> m_pSettings;
};
