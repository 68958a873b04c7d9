// The console as a whole.
#include <QClipboard>
#include <QComboBox>
#include <QDockWidget>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

#include "connectionspanel.h"
#include "keel0/platform.h"
#include "tesselhostfixture.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{
TEST_F( TesselHost, ConnectsToWhatTheAddressBarSaysAndRemembersIt )
{
	Start();
	EXPECT_EQ( Child<QComboBox>( "AddressBar" )->currentText(), "127.0.0.1:27190" );
	Child<QComboBox>( "AddressBar" )->setEditText( m_Peer.Address().ToString() );
	QTest::mouseClick( Child<QPushButton>( "ConnectButton" ), Qt::LeftButton );
	ASSERT_TRUE( WaitUntilConnected() );
	EXPECT_EQ( m_pHost->Window().Connections().RecentAddresses(), QStringList( m_Peer.Address().ToString() ) );
	EXPECT_THAT( ConsoleText().toStdString(), HasSubstr( "connected to first" ) );
	m_pHost.reset();
	Start();
	EXPECT_EQ( m_pHost->Window().Connections().RecentAddresses(), QStringList( m_Peer.Address().ToString() ) );
	EXPECT_EQ( Child<QComboBox>( "AddressBar" )->currentText(), m_Peer.Address().ToString() );
}

TEST_F( TesselHost, TellsWhatToDoWhileThereIsNoConnection )
{
	Start();
	EXPECT_EQ( m_pHost->Window().focusWidget(), Child<QComboBox>( "AddressBar" ) );
	EXPECT_EQ( Child<QComboBox>( "AddressBar" )->lineEdit()->selectedText(), "127.0.0.1:27190" );
	const auto *pHint = Child<QLabel>( "ConnectionHint" );
	EXPECT_TRUE( pHint->isVisible() );
	m_pHost->Connections().Add( m_Peer.Address() );
	EXPECT_FALSE( pHint->isVisible() );
	m_pHost->Connections().RemoveAll();
	EXPECT_TRUE( pHint->isVisible() );
}

TEST_F( TesselHost, ShowsOneLineForABadAddressUntilItIsEdited )
{
	Start();
	auto *pError = Child<QLabel>( "AddressError" );
	EXPECT_FALSE( pError->isVisible() );
	Child<QComboBox>( "AddressBar" )->setEditText( "<b>:1" );
	QTest::keyClick( Child<QComboBox>( "AddressBar" )->lineEdit(), Qt::Key_Return );
	EXPECT_TRUE( pError->isVisible() );
	EXPECT_EQ( pError->textFormat(), Qt::PlainText );
	EXPECT_THAT( pError->text().toStdString(), HasSubstr( "bad address \"<b>:1\"" ) );
	EXPECT_EQ( m_pHost->Connections().Count(), 0 );
	QTest::keyClick( Child<QComboBox>( "AddressBar" )->lineEdit(), Qt::Key_2 );
	EXPECT_FALSE( pError->isVisible() );
}

TEST_F( TesselHost, KeepsTheNewestRecentAddressesOnly )
{
	Start();
	CQConnectionsPanel &panel = m_pHost->Window().Connections();
	for ( uint16_t nPort = 1; nPort <= 12; nPort++ )
		panel.AddRecentAddress( { "a", nPort } );
	panel.AddRecentAddress( { "a", 5 } );
	EXPECT_EQ( panel.RecentAddresses().size(), 10 );
	EXPECT_EQ( panel.RecentAddresses().mid( 0, 3 ), QStringList( { "a:5", "a:12", "a:11" } ) );
}

TEST_F( TesselHost, ASmallWindowLeavesRoomForTheStateOfAConnection )
{
	Start();
	m_pHost->Window().resize( 500, 400 );
	RunEventTurns();
	const auto *pList = Child<QTreeView>( "ConnectionList" );
	ASSERT_LT( pList->viewport()->width(), pList->header()->length() )
		<< "all columns together are wider than the list";
	EXPECT_GT( pList->columnWidth( CConnectionsModel::StateColumn ),
		QFontMetrics( pList->font() ).horizontalAdvance( "Disconnected" ) );
}

TEST_F( TesselHost, DisconnectsConnectsAndRemovesTheSelectedConnection )
{
	m_Options.m_Connect = { m_Peer.Address() };
	Start();
	ASSERT_TRUE( WaitUntilConnected() );
	auto *pToggle = Child<QPushButton>( "ToggleButton" );
	EXPECT_EQ( pToggle->text(), "Disconnect" );
	QTest::mouseClick( pToggle, Qt::LeftButton );
	EXPECT_EQ( pToggle->text(), "Connect" );
	EXPECT_EQ( m_pHost->Connections().At( 0 )->GetState(), 0 );
	QTest::mouseClick( pToggle, Qt::LeftButton );
	ASSERT_TRUE( WaitUntilConnected() );
	QTest::mouseClick( Child<QPushButton>( "RemoveButton" ), Qt::LeftButton );
	EXPECT_EQ( m_pHost->Connections().Count(), 0 );
	EXPECT_FALSE( pToggle->isEnabled() );
	EXPECT_EQ( m_pRecord->m_Calls.back(), "ConnectionEnded first" );
}

TEST_F( TesselHost, GivesSubToolsTheSelectedConnection )
{
	m_Options.m_Connect = { m_Peer.Address(), m_OtherPeer.Address() };
	Start();
	EXPECT_EQ( m_pHost->GetCurrentConnection(), m_pHost->Connections().At( 0 ) ) << "the first one asked for";
	ASSERT_TRUE( WaitUntilConnected( 0 ) );
	ASSERT_TRUE( WaitUntilConnected( 1 ) );
	SubToolAction()->trigger();
	EXPECT_NE( FindWindow( "Show Budget - first" ), nullptr );
	m_pHost->Connections().SetCurrent( m_pHost->Connections().At( 1 ) );
	SubToolAction()->trigger();
	EXPECT_NE( FindWindow( "Show Budget - second" ), nullptr );
	m_Peer.SendChunk( wire::FourCC( "PCPU" ), "sample" );
	EXPECT_TRUE( WaitFor( [this]() { return m_pRecord->m_nSamples == 1; } ) );
}

TEST_F( TesselHost, EnablesSubToolsOnlyWhileThereIsAConnection )
{
	Start();
	ASSERT_NE( SubToolAction(), nullptr );
	EXPECT_FALSE( SubToolAction()->isEnabled() );
	EXPECT_EQ( SubToolAction()->toolTip(), "Show Budget: connect to an engine first" );
	EXPECT_EQ( m_pHost->GetCurrentConnection(), nullptr );
	m_pHost->Connections().Add( m_Peer.Address() );
	EXPECT_EQ( SubToolAction()->toolTip(), "Show Budget" );
	EXPECT_TRUE( SubToolAction()->isEnabled() ) << "its window may be opened before the engine answers";
	m_pHost->Connections().RemoveAll();
	EXPECT_FALSE( SubToolAction()->isEnabled() );
}

TEST_F( TesselHost, OpensWhatTheCommandLineWantsForTheFirstConnectionThatIsUp )
{
	CTestPeer silent;
	m_Options.m_Connect = { silent.Address(), m_Peer.Address() };
	m_Options.m_Open = QStringList( "show budget" );
	Start();
	ASSERT_TRUE( WaitUntilConnected( 1 ) );
	EXPECT_NE( FindWindow( "Show Budget - first" ), nullptr );
	EXPECT_EQ( m_pHost->Connections().Current(), m_pHost->Connections().At( 1 ) );
	m_Peer.Reset();
	ASSERT_TRUE( WaitFor( [this]() { return m_Peer.Accepted() == 2; } ) );
	ASSERT_TRUE( WaitUntilConnected( 1 ) );
	EXPECT_EQ( std::count( m_pRecord->m_Calls.begin(), m_pRecord->m_Calls.end(), "Open" ), 1 );
}

TEST_F( TesselHost, GivesAWindowRoomTheFirstTimeAndLeavesItAloneLater )
{
	m_Options.m_Connect = { m_Peer.Address() };
	m_Options.m_Open = QStringList( "Show Budget" );
	Start();
	ASSERT_TRUE( WaitUntilConnected() );
	QWidget *pWindow = FindWindow( "Show Budget - first" );
	ASSERT_NE( pWindow, nullptr );
	const QSize screen = pWindow->screen()->availableSize();
	EXPECT_GE( pWindow->width(), screen.width() / 2 );
	EXPECT_GE( pWindow->height(), screen.height() / 2 );
	EXPECT_LT( pWindow->width(), screen.width() );
	EXPECT_LT( pWindow->height(), screen.height() );
	pWindow->resize( 123, 45 );
	SubToolAction()->trigger();
	EXPECT_EQ( pWindow->size(), QSize( 123, 45 ) ) << "the user made it that small";
	m_pHost.reset();
	Start();
	ASSERT_TRUE( WaitUntilConnected() );
	EXPECT_LT( FindWindow( "Show Budget - first" )->width(), screen.width() / 2 ) << "the sub-tool knows its size now";
}

TEST_F( TesselHost, SendsItsTokenAndNeverShowsOrSavesIt )
{
	QFile file( m_Folder.filePath( "token" ) );
	ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
	file.write( "secret\n" );
	file.close();
	m_Options.m_TokenFile = file.fileName();
	m_Options.m_Connect = { m_Peer.Address() };
	m_Peer.GreetWith( HelloBytes( QByteArray( "first\0secret", 12 ) ) );
	Start();
	ASSERT_TRUE( WaitUntilConnected() );
	EXPECT_TRUE( WaitFor( [this]() { return m_Peer.Received().contains( QByteArray( "\0secret", 7 ) ); } ) );
	EXPECT_THAT( ConsoleText().toStdString(), testing::Not( HasSubstr( "secret" ) ) );
	m_pHost->ShutDown();
	QFile settings( m_Options.m_SettingsFile );
	ASSERT_TRUE( settings.open( QIODevice::ReadOnly ) );
	EXPECT_FALSE( settings.readAll().contains( "secret" ) );
}

TEST_F( TesselHost, DoesNotStartWithATokenThatCannotBeUsed )
{
	m_Options.m_TokenFile = "/no/such/token";
	m_Options.m_Connect = { m_Peer.Address() };
	CTesselHost host( m_Options );
	QString error;
	EXPECT_FALSE( host.Start( error ) );
	EXPECT_THAT( error.toStdString(), HasSubstr( "cannot read the token file /no/such/token" ) );
	EXPECT_EQ( host.Connections().Count(), 0 ) << "nobody is asked without the token that was wanted";
}

TEST_F( TesselHost, RefusesToOpenASubToolThatThereIsNot )
{
	m_Options.m_Open = QStringList( "Show Nothing" );
	CTesselHost host( m_Options );
	QString error;
	EXPECT_FALSE( host.Start( error ) );
	EXPECT_EQ( error, "there is no sub-tool \"Show Nothing\" (loaded: \"Show Budget\")" );
	host.ShutDown();
	EXPECT_FALSE( QFile::exists( m_Options.m_SettingsFile ) ) << "a run that never began saves nothing";
}

TEST_F( TesselHost, TellsSubToolsWhenALinkComesAndGoesAndKeepsTheirConnection )
{
	m_Options.m_Connect = { m_Peer.Address() };
	Start();
	ASSERT_TRUE( WaitUntilConnected() );
	ITesselConnection *pConnection = m_pHost->GetCurrentConnection();
	m_pRecord->m_Calls.clear();
	m_Peer.Reset();
	ASSERT_TRUE( WaitFor( [this]() { return m_Peer.Accepted() == 2; } ) );
	ASSERT_TRUE( WaitUntilConnected() );
	EXPECT_THAT( m_pRecord->m_Calls, ElementsAre( "ConnectionStateChanged 1", "ConnectionStateChanged 3" ) );
	EXPECT_EQ( m_pHost->GetCurrentConnection(), pConnection );
}

TEST_F( TesselHost, ShutsDownInASafeOrderAndOnlyOnce )
{
	m_Options.m_Connect = { m_Peer.Address(), m_OtherPeer.Address() };
	m_Options.m_Open = QStringList( "Show Budget" );
	Start();
	ASSERT_TRUE( WaitUntilConnected( 0 ) );
	ASSERT_TRUE( WaitUntilConnected( 1 ) );
	m_pRecord->m_Calls.clear();
	m_pHost->ShutDown();
	m_pHost->ShutDown();
	EXPECT_THAT( m_pRecord->m_Calls,
		ElementsAre( "SaveSettings", "ConnectionEnded second", "ConnectionEnded first", "ShutDown", "Disconnect" ) );
	KeyValues saved( "x" );
	ASSERT_EQ( saved.LoadFromFile( m_Options.m_SettingsFile.toUtf8().constData() ), KeyValues::LoadResult::Loaded );
	EXPECT_EQ( saved.FindKey( "sub_tools" )->FindKey( "Tessel_SubTool_001_ShowBudgetTool" )->GetInt( "number" ), 1 );
}

TEST_F( TesselHost, SendsCommandsToTheCurrentEngineAndShowsThem )
{
	m_Options.m_Connect = { m_Peer.Address() };
	Start();
	ASSERT_TRUE( WaitUntilConnected() );
	QTest::keyClicks( Child<QLineEdit>( "ConsoleCommand" ), "bodies 500" );
	QTest::keyClick( Child<QLineEdit>( "ConsoleCommand" ), Qt::Key_Return );
	const QByteArray expected = ChunkBytes( wire::FourCC( "CMND" ), "bodies 500" );
	EXPECT_TRUE( WaitFor( [&]() { return m_Peer.Received().endsWith( expected ); } ) );
	EXPECT_THAT( ConsoleText().toStdString(), HasSubstr( "> bodies 500" ) );
}

TEST_F( TesselHost, RefusesACommandThatIsTooLongWithALine )
{
	m_Options.m_Connect = { m_Peer.Address() };
	Start();
	ASSERT_TRUE( WaitUntilConnected() );
	emit m_pHost->Window().Console().CommandEntered( QString( 4097, 'x' ) );
	EXPECT_THAT( ConsoleText().toStdString(), HasSubstr( "it is 4097 bytes long, the limit is 4096" ) );
	emit m_pHost->Window().Console().CommandEntered( QString( 4096, 'y' ) );
	const QByteArray expected = ChunkBytes( wire::FourCC( "CMND" ), QByteArray( 4096, 'y' ) );
	ASSERT_TRUE( WaitFor( [&]() { return m_Peer.Received().endsWith( expected ); } ) );
	EXPECT_FALSE( m_Peer.Received().contains( QByteArray( 16, 'x' ) ) );
}

TEST_F( TesselHost, SaysThatACommandGoesNowhereWithoutAnEngine )
{
	Start();
	emit m_pHost->Window().Console().CommandEntered( "lost" );
	EXPECT_THAT( ConsoleText().toStdString(), HasSubstr( "the command is not sent" ) );
}

TEST_F( TesselHost, ShowsLinesOfEnginesUnderTheirNames )
{
	m_Options.m_Connect = { m_Peer.Address() };
	Start();
	ASSERT_TRUE( WaitUntilConnected() );
	m_Peer.SendChunk( wire::FourCC( "PRNT" ), BigEndian32( 2 ) + "it broke\n" );
	ASSERT_TRUE( WaitFor( [this]() { return ConsoleText().contains( "it broke" ); } ) );
	const ConsoleLine &line = m_pHost->Console().Line( m_pHost->Console().rowCount() - 1 );
	EXPECT_EQ( line.m_Source, "first" );
	EXPECT_EQ( line.m_Severity, LoggingSeverity::Error );
}

TEST_F( TesselHost, GoesOnWithoutAModuleThatCannotBeLoadedAndSaysSo )
{
	m_Options.m_Plugins = QStringList( { "/no/such/libx_subtool.so", GoodPlugin() } );
	Start();
	EXPECT_THAT( ConsoleText().toStdString(), HasSubstr( "cannot load /no/such/libx_subtool.so" ) );
	EXPECT_NE( SubToolAction(), nullptr );
}

TEST_F( TesselHost, SwitchesAndRemembersTheStyle )
{
	Start();
	EXPECT_FALSE( m_pHost->IsDarkStyle() );
	emit m_pHost->Window().StyleChosen( StyleChoice::Dark );
	EXPECT_TRUE( m_pHost->IsDarkStyle() );
	m_pHost.reset();
	ApplyStyle( StyleChoice::Light );
	Start();
	EXPECT_TRUE( m_pHost->IsDarkStyle() );
	m_pHost.reset();
	m_Options.m_Style = StyleChoice::Light;
	Start();
	EXPECT_FALSE( m_pHost->IsDarkStyle() ) << "the command line decides for this run";
}

TEST_F( TesselHost, ItsMenuSwitchesTheStyleAndMarksTheOneInForce )
{
	m_Options.m_Style = StyleChoice::Dark;
	Start();
	const auto marked = [this]()
	{
		QStringList texts;
		for ( const char *pText : { "As the &desktop", "Da&rk", "&Light" } )
			if ( MenuAction( pText )->isChecked() )
				texts += pText;
		return texts;
	};
	EXPECT_EQ( marked(), QStringList( "Da&rk" ) );
	MenuAction( "As the &desktop" )->trigger();
	EXPECT_FALSE( m_pHost->IsDarkStyle() ) << "the test platform is a light desktop";
	EXPECT_EQ( marked(), QStringList( "As the &desktop" ) );
	MenuAction( "Da&rk" )->trigger();
	EXPECT_TRUE( m_pHost->IsDarkStyle() );
	MenuAction( "&Light" )->trigger();
	EXPECT_FALSE( m_pHost->IsDarkStyle() );
	EXPECT_EQ( marked(), QStringList( "&Light" ) );
}

TEST_F( TesselHost, ItsFileMenuLeadsToTheAddressBarAndToTheEnd )
{
	Start();
	auto *pAddress = Child<QComboBox>( "AddressBar" );
	auto *pDock = Child<QDockWidget>( "Connections" );
	Child<QLineEdit>( "ConsoleFilter" )->setFocus();
	pDock->close();
	MenuAction( "&Connect\u2026" )->trigger();
	EXPECT_TRUE( pDock->isVisible() );
	EXPECT_EQ( m_pHost->Window().focusWidget(), pAddress );
	QSignalSpy finished( m_pHost.get(), &CTesselHost::Finished );
	MenuAction( "&Quit" )->trigger();
	ASSERT_EQ( finished.count(), 1 );
	EXPECT_EQ( finished[0][0].toInt(), 0 );
}

TEST_F( TesselHost, GivesAUIScaleThatIsMoreThanZero )
{
	Start();
	EXPECT_GT( m_pHost->GetUIScale(), 0.0f );
}

TEST_F( TesselHost, PutsTextOfThePlatformLibraryOnTheClipboard )
{
	Start();
	Plat_SetClipboardText( "gr\xc3\xbc\xc3\x9f" );
	EXPECT_EQ( QApplication::clipboard()->text(), QString::fromUtf8( "gr\xc3\xbc\xc3\x9f" ) );
	m_pHost.reset();
	Plat_SetClipboardText( "nobody" );
	EXPECT_NE( QApplication::clipboard()->text(), "nobody" );
}

TEST_F( TesselHost, AsksToEndWhenItsWindowIsClosed )
{
	Start();
	QSignalSpy finished( m_pHost.get(), &CTesselHost::Finished );
	m_pHost->Window().close();
	ASSERT_EQ( finished.count(), 1 );
	EXPECT_EQ( finished[0][0].toInt(), 0 );
}
} // namespace
