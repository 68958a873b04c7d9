// The console's main window: connections above, console below, menus.
#pragma once

#include <QMainWindow>

#include <vector>

#include "plugin.h"
#include "style.h"

class CConnectionList;
class CConsoleModel;
class CHostSettings;
class CQConnectionsPanel;
class CQConsolePanel;
class QActionGroup;
class QDockWidget;
class QMenu;
class QToolBar;

class CQMainWindow final : public QMainWindow
{
	Q_OBJECT

public:
	// Both must outlive the window.
	CQMainWindow( CConnectionList &connections, CConsoleModel &console );

	// One action for each sub-tool, in the menu and the tool bar. The sub-tools must stay as long as the window.
	void SetSubTools( const std::vector<const SubTool *> &tools );

	void SetStyleChoice( StyleChoice choice ); // marks it in the menu

	void ReadSettings( const CHostSettings &settings );
	void WriteSettings( CHostSettings &settings ) const;

	CQConnectionsPanel &Connections() { return *m_pConnections; }
	CQConsolePanel &Console() { return *m_pConsole; }

signals:
	void OpenRequested( const SubTool *pTool );
	void StyleChosen( StyleChoice choice );
	void CloseRequested();

protected:
	void closeEvent( QCloseEvent *pEvent ) override;

private slots:
	void OnCurrentConnectionChanged();
	void OnAbout();

private:
	void MakeMenus();
	void MakeStyleMenu( QMenu &viewMenu );

	CConnectionList &m_List;
	CQConnectionsPanel *m_pConnections = nullptr;
	CQConsolePanel *m_pConsole = nullptr;
	QDockWidget *m_pConnectionsDock = nullptr;
	QMenu *m_pSubToolMenu = nullptr;
	QToolBar *m_pSubToolBar = nullptr;
	QActionGroup *m_pStyles = nullptr;
	std::vector<QAction *> m_SubToolActions;
};
