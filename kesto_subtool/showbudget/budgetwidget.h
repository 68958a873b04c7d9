// The Show Budget window of one connection.
#pragma once

#include <QMainWindow>
#include <array>
#include <cstdint>

#include "showbudget/budgetactions.h"
#include "showbudget/budgetchunkdecoder.h"
#include "showbudget/budgetoptions.h"
#include "showbudget/budgetsamplestore.h"
#include "showbudget/budgetstatusbar.h"
#include "showbudget/repaintpacer.h"
#include "tessel/itesseldatareceived.h"
#include "views/ibudgetviewowner.h"

class CQBudgetHistoryWidget;
class CQBudgetSamplesWidget;
class CQKestoPlayerWidget;
class CQMiniProfilerWidget;
class IBudgetWindowOwner;
class ITesselConnection;
class QDockWidget;

// The sub-tool makes it, keeps it for as long as the connection lives (closing only hides it) and deletes it when the
// connection ends. The connection may end while the window is inside one of its own functions, through a chunk that it
// sends: IsBusy() is true then, and the window may only be deleted once that function has returned (deleteLater).
class CQBudgetWidget final
	: public QMainWindow
	, public ITesselDataReceived
	, public IBudgetViewOwner
{
	Q_OBJECT

public:
	// Registers itself as a receiver of the connection, which must live until OnConnectionEnded. The owner follows up
	// with OnConnectionStateChanged once it knows the window, because that sends.
	CQBudgetWidget( ITesselConnection &connection, IBudgetWindowOwner &owner );
	~CQBudgetWidget() override;

	// Writes options and layout into the owner's settings; nothing when there are none. Geometry and window state are
	// written only while the window is visible.
	void SaveSettings();

	// The connection was made or lost: tells the engine what is wanted, or stops sampling.
	void OnConnectionStateChanged();

	// Stops sampling and forgets the connection, which is not touched from here on.
	void OnConnectionEnded();
	void ForgetConnection(); // without telling the engine
	bool IsBusy() const { return m_nBusy > 0; }

	bool IsRunning() const { return m_bRunning; }
	const CBudgetSampleStore &Samples() const { return m_Samples; }

	// Recordings, for a host that was given a file: it reaches these by their names (QMetaObject::invokeMethod).
	// Opens the file in the player, which asks about damage; false when no recording was taken. Runs events: the window
	// may be gone afterwards. The player has the window to itself until there is an engine, and how the window is
	// arranged then is not kept for others.
	Q_INVOKABLE bool OpenRecording( const QString &fileName );
	// The frame (the nearest that there is), the whole of it.
	Q_INVOKABLE void ShowRecordedFrame( int nFrame );
	Q_INVOKABLE void ShowSlowestRecordedFrame();

	// ITesselDataReceived
	bool OnDataReceived( ITesselConnection *pConnection, uint32_t nChunkType, uint16_t nVersion, uint32_t nLength,
		uint8_t *pBuffer ) override;

	// IBudgetViewOwner
	BudgetViewData GetViewData() const override;
	const BudgetViewStyle &GetViewStyle() const override { return m_Style; }
	KeyValues *GetViewSettings() override;
	void OnHistoryCursorChanged() override;
	void AddCursorLabel( QWidget *pLabel ) override;
	void ToggleSampling() override;

public slots:
	void OnFPSLabels();
	void OnShowBudgetAverages();
	void OnFPSThresholdsToggled();
	void OnFPSAveragesToggled();
	void OnClearSamples();
	void StartSampling();
	void StopSampling();
	void TickSampling( bool bOn );
	void ShowMiniProfiler( bool bShow );
	void SendMiniProfilerUpdateFlags();

protected:
	void showEvent( QShowEvent *pEvent ) override;
	void closeEvent( QCloseEvent *pEvent ) override;
	void keyPressEvent( QKeyEvent *pEvent ) override;
	void contextMenuEvent( QContextMenuEvent *pEvent ) override;

private:
	class CBusy;

	void CreateViews();
	QDockWidget *AddBottomDock( const QString &title, const char *pObjectName, QWidget *pContent );
	void CreateActions();
	void ConnectActions();
	void CreateMenusAndToolBar();
	void RegisterReceivers();
	void RestoreLayout();
	void ArrangeForRecording( bool bOn );

	bool IsConnected() const;
	void ReceiveCategories( std::span<const uint8_t> payload );
	void ReceiveSample( std::span<const uint8_t> payload );
	void ReceiveMiniProfiler( std::span<const uint8_t> payload );
	void RefreshStatusTexts();
	void RepaintViews();

	ITesselConnection *m_pConnection; // null once it has ended
	IBudgetWindowOwner &m_Owner;
	int m_nBusy = 0;

	CBudgetSampleStore m_Samples;
	BudgetSample m_ReceivedSample; // kept for its memory
	BudgetOptions m_Options;
	bool m_bRunning = false;
	bool m_bArrangedForRecording = false;
	std::array<uint8_t, 2> m_SamplingOptions{}; // sent with 'KSTO'

	BudgetViewStyle m_Style;
	CBudgetStatusBar m_StatusBar;
	CRepaintPacer m_SamplePainting{ [this] { RepaintViews(); } };
	BudgetActions m_Actions;
	QMenu *m_pContextMenu = nullptr;

	CQBudgetSamplesWidget *m_pSamplesView = nullptr;
	CQBudgetHistoryWidget *m_pHistoryView = nullptr;
	CQMiniProfilerWidget *m_pMiniProfiler = nullptr;
	CQKestoPlayerWidget *m_pPlayer = nullptr;
	QDockWidget *m_pHistoryDock = nullptr;
	QDockWidget *m_pMiniProfilerDock = nullptr;
	QDockWidget *m_pPlayerDock = nullptr;
};
