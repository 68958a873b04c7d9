// The console as a whole: everything made, connected with each other, and ended in the right order.
#pragma once

#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

#include "commandline.h"
#include "connectionlist.h"
#include "consolelog.h"
#include "consolemodel.h"
#include "hostsettings.h"
#include "mainwindow.h"
#include "platformhooks.h"
#include "screenshot.h"
#include "subtools.h"
#include "tessel/itesselhost.h"

class CDemoProcess;
class CRecordingConnection;
class CUnattendedBoxes;

class CTesselHost final
	: public QObject
	, public ITesselHost
{
	Q_OBJECT

public:
	// The pictures must be registered (RegisterImages). Reads the settings and applies the style.
	explicit CTesselHost( const CommandLineOptions &options );
	~CTesselHost() override; // as ShutDown

	// Loads the sub-tools, shows the window and begins what the command line asks for. False, with one line in error,
	// when it asks for a sub-tool that there is not, or when there is a token that cannot be used.
	bool Start( QString &error );

	// Saves the settings (when it was started), ends all connections and unloads the sub-tools. Nothing happens the
	// second time.
	void ShutDown();

	// ITesselHost. The current connection is there whether it is connected or not; while a sub-tool is asked to show a
	// recording, it is the recording's.
	ITesselConnection *GetCurrentConnection() override;
	bool IsDarkStyle() const override;
	float GetUIScale() const override;

	CConnectionList &Connections() { return *m_pConnections; }
	CConsoleModel &Console() { return m_ConsoleModel; }
	CConsoleLog &Log() { return *m_pLog; }
	CSubTools &SubTools() { return *m_pSubTools; }
	CQMainWindow &Window() { return *m_pWindow; }

signals:
	// The program should end with that status.
	void Finished( int nStatus );

private:
	void ConnectSignals();
	void ConnectConsole();
	QString PluginFolder() const;
	bool CheckSubToolsToOpen( QString &error ) const;
	void OpenWanted( CTargetConnection *pConnection );
	void StartDemo();
	void StartScreenshot();
	void OpenRecordings();
	void OnRecordingsOpen();
	bool OpenRecording( const QString &fileName );
	QWidget *OpenRecordingWindow( const QString &fileName );
	void Report( LoggingSeverity severity, const QString &source, const QString &text );
	void OnOpenRequested( const SubTool *pTool );
	void GiveRoomTheFirstTime( const SubTool *pTool );
	void OnStyleChosen( StyleChoice choice );
	void OnLinkChanged( CTargetConnection *pConnection );
	void OnConnectRequested( const TargetAddress &address );
	void OnCommandEntered( const QString &command );

	CommandLineOptions m_Options;
	QStringList m_SubToolsToOpen;   // not opened yet
	QStringList m_SubToolsWithSize; // interfaces whose windows were given their first size
	CPlatformHooks m_PlatformHooks;
	CConsoleModel m_ConsoleModel;
	std::unique_ptr<CConsoleLog> m_pLog;
	CHostSettings m_Settings;
	std::unique_ptr<CConnectionList> m_pConnections;
	std::unique_ptr<CSubTools> m_pSubTools;
	std::unique_ptr<CQMainWindow> m_pWindow;
	std::vector<std::unique_ptr<CRecordingConnection>> m_Recordings;
	ITesselConnection *m_pOpenedFor = nullptr; // instead of the current connection
	std::vector<QPointer<QWidget>> m_RecordingWindows;
	std::unique_ptr<CDemoProcess> m_pDemo;
	std::unique_ptr<CScreenshot> m_pScreenshot;
	std::unique_ptr<CUnattendedBoxes> m_pUnattendedBoxes; // while a picture is waited for
	bool m_bStarted = false;
	bool m_bShutDown = false;
};

// Makes the "game:" paths of pictures reach the ones that the program carries.
void RegisterImages();
