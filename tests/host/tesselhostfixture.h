// A console that a test starts, with engines made by the test and a module made for it.
#pragma once

#include <gmock/gmock.h>

#include <QAction>
#include <QApplication>
#include <QLibrary>
#include <QMainWindow>
#include <QTemporaryDir>

#include <memory>

#include "consolepanel.h"
#include "targetconnection.h"
#include "tesselhost.h"
#include "testpeer.h"
#include "testplugin.h"

inline QString GoodPlugin()
{
	return QString( "%1/libgood_subtool.so" ).arg( TEST_PLUGIN_FOLDER );
}

inline QWidget *FindWindow( const QString &title )
{
	for ( QWidget *pWidget : QApplication::topLevelWidgets() )
		if ( pWidget->isVisible() && pWidget->windowTitle() == title )
			return pWidget;
	return nullptr;
}

class TesselHost : public testing::Test
{
protected:
	TesselHost()
	{
		RegisterImages();
		m_Options.m_PluginFolder = m_Folder.filePath( "no_plugins" );
		m_Options.m_SettingsFile = m_Folder.filePath( "tessel.settings" );
		m_Options.m_Plugins = QStringList( GoodPlugin() );
		m_Peer.GreetWith( HelloBytes( "first" ) );
		m_OtherPeer.GreetWith( HelloBytes( "second" ) );
		QLibrary library( GoodPlugin() );
		m_pRecord = reinterpret_cast<TestPluginGetRecordFn>( library.resolve( "TestPlugin_GetRecord" ) )();
		*m_pRecord = TestPluginRecord();
	}

	CTesselHost &Start()
	{
		m_pHost = std::make_unique<CTesselHost>( m_Options );
		QString error;
		EXPECT_TRUE( m_pHost->Start( error ) ) << error.toStdString();
		return *m_pHost;
	}

	QString ConsoleText()
	{
		m_pHost->Log().Flush();
		QStringList lines;
		for ( int i = 0; i < m_pHost->Console().rowCount(); i++ )
			lines += m_pHost->Console().Line( i ).m_Text;
		return lines.join( '\n' );
	}

	template <typename Widget>
	Widget *Child( const char *pName )
	{
		return m_pHost->Window().findChild<Widget *>( pName );
	}

	QAction *FindAction( const QString &text )
	{
		for ( QAction *pAction : m_pHost->Window().findChildren<QAction *>() )
			if ( pAction->text() == text )
				return pAction;
		return nullptr;
	}
	QAction *SubToolAction() { return FindAction( "Show Budget" ); }
	QAction *MenuAction( const char *pText )
	{
		QAction *pAction = FindAction( pText );
		EXPECT_NE( pAction, nullptr ) << pText;
		return pAction;
	}

	bool WaitUntilConnected( int nIndex = 0 )
	{
		return WaitFor( [this, nIndex]()
			{ return m_pHost->Connections().Count() > nIndex && m_pHost->Connections().At( nIndex )->IsConnected(); } );
	}

	QTemporaryDir m_Folder;
	CommandLineOptions m_Options;
	CTestPeer m_Peer;
	CTestPeer m_OtherPeer;
	TestPluginRecord *m_pRecord = nullptr;
	std::unique_ptr<CTesselHost> m_pHost;
};
