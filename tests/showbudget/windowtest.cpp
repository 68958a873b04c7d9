// What the window is made of.
#include <gmock/gmock.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QFontMetrics>
#include <QImage>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QWindow>
#include <QtTest>
#include <set>
#include <typeinfo>

#include "miniprofiler/miniprofilerwidget.h"
#include "recordings/kestoplayerwidget.h"
#include "showbudget/windowfixture.h"
#include "views/budgethistorywidget.h"
#include "views/budgetsampleswidget.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace
{
constexpr const char *g_MenuEntries[] = { "FPS Units", "Show Budget Averages", "-", "Budget History", "FPS Thresholds",
	"FPS Averages", "-", "Tick Sampling", "Microprofiler", "Kesto Player", "-", "Clear Samples", "-", "Start Sampling",
	"Stop Sampling" };

// The texts of a menu or tool bar, "-" for a separator.
std::vector<std::string> Entries( const QWidget &widget )
{
	std::vector<std::string> entries;
	for ( const QAction *pAction : widget.actions() )
		entries.push_back( pAction->isSeparator() ? "-" : pAction->text().toStdString() );
	return entries;
}

// Pictures of one colour each in the place of the host's, while it lives.
class CPictures
{
public:
	CPictures() { QDir::setSearchPaths( "game", { m_Folder.path() } ); }
	~CPictures() { QDir::setSearchPaths( "game", m_Before ); }

	void Add( const QString &name, const QColor &colour ) const
	{
		const QString path = m_Folder.filePath( "tools/images/" + name + ".png" );
		EXPECT_TRUE( QDir().mkpath( QFileInfo( path ).path() ) );
		QImage image( 16, 16, QImage::Format_RGB32 );
		image.fill( colour );
		EXPECT_TRUE( image.save( path ) );
	}

private:
	QTemporaryDir m_Folder;
	QStringList m_Before = QDir::searchPaths( "game" );
};

QColor ColourOf( const QIcon &icon )
{
	return icon.pixmap( 16, 16 ).toImage().pixelColor( 8, 8 );
}

QLabel *LabelWithText( const CQBudgetWidget &window, const QString &text )
{
	for ( QLabel *pLabel : window.statusBar()->findChildren<QLabel *>() )
	{
		if ( pLabel->text() == text )
			return pLabel;
	}
	ADD_FAILURE() << "no label says " << text.toStdString();
	return nullptr;
}
} // namespace

TEST_F( WindowTest, TheTitleNamesTheConnection )
{
	m_Connection.m_Name = "demo \xC3\xA9ngine";
	EXPECT_EQ( MakeWindow().windowTitle(), QString::fromUtf8( "Show Budget - demo \xC3\xA9ngine" ) );
	m_Connection.m_Name = "";
	EXPECT_EQ( MakeWindow().windowTitle(), "Show Budget - " );
}

TEST_F( WindowTest, TheTitleShowsANameWithTheMarkOfUnsavedChangesAsItIs )
{
	m_Connection.m_Name = "a[*]b[*][*] <&c> %1";
	MakeWindow().show();
	EXPECT_EQ( m_pWindow->windowHandle()->title(), "Show Budget - a[*]b[*][*] <&c> %1" );
}

// What lists windows (a taskbar, a switcher) obeys what stands in a title.
TEST_F( WindowTest, TheTitleIsALineOfTextWhateverTheConnectionIsCalled )
{
	m_Connection.m_Name = "a\nb\x1B[2J \xE2\x80\xAE"
						  "txt.\xFF";
	EXPECT_EQ( MakeWindow().windowTitle(), QStringLiteral( "Show Budget - a\uFFFDb\uFFFD[2J \uFFFDtxt.\uFFFD" ) );
	m_Connection.m_Name = std::string( 1'000'000, 'x' );
	EXPECT_EQ( MakeWindow().windowTitle(), "Show Budget - " + QString( 254, 'x' ) + QChar( 0x2026 ) );
}

TEST_F( WindowTest, TheHostsQuitDoesNotWaitForTheWindow )
{
	EXPECT_FALSE( MakeWindow().testAttribute( Qt::WA_QuitOnClose ) );
}

TEST_F( WindowTest, DocksAreAnimatedNestedAndTabbed )
{
	EXPECT_EQ( static_cast<int>( MakeWindow().dockOptions() ), 7 );
}

TEST_F( WindowTest, TheSamplesStripIsInTheCentre )
{
	MakeWindow();
	EXPECT_NE( qobject_cast<CQBudgetSamplesWidget *>( m_pWindow->centralWidget() ), nullptr );
}

TEST_F( WindowTest, HasThreeDocksAtTheBottomOfWhichTheHistoryShows )
{
	MakeWindow();
	const struct
	{
		const char *m_pTitle;
		const char *m_pObjectName;
		const QMetaObject *m_pContent;
		bool m_bHidden;
	} rows[] = {
		{ "Budget History", "ShowBudget_History", &CQBudgetHistoryWidget::staticMetaObject, false },
		{ "MiniProfiler History", "MiniProfiler_History", &CQMiniProfilerWidget::staticMetaObject, true },
		{ "Kesto Player", "Kesto_Player", &CQKestoPlayerWidget::staticMetaObject, true },
	};
	EXPECT_EQ( m_pWindow->findChildren<QDockWidget *>().size(), 3 );
	for ( const auto &row : rows )
	{
		SCOPED_TRACE( row.m_pTitle );
		QDockWidget *pDock = Dock( row.m_pTitle );
		ASSERT_NE( pDock, nullptr );
		EXPECT_EQ( pDock->objectName(), row.m_pObjectName );
		EXPECT_EQ( static_cast<int>( pDock->features() ), 7 );
		EXPECT_EQ( m_pWindow->dockWidgetArea( pDock ), Qt::BottomDockWidgetArea );
		EXPECT_EQ( pDock->widget()->metaObject(), row.m_pContent );
		EXPECT_EQ( pDock->isHidden(), row.m_bHidden );
	}
}

TEST_F( WindowTest, ActionsHaveTheirTextsAndStates )
{
	MakeWindow();
	const struct
	{
		const char *m_pText;
		bool m_bCheckable;
		bool m_bChecked;
	} rows[] = {
		{ "FPS Units", true, false },
		{ "Show Budget Averages", true, true },
		{ "FPS Thresholds", true, true },
		{ "FPS Averages", true, false },
		{ "Clear Samples", false, false },
		{ "Start Sampling", false, false },
		{ "Stop Sampling", false, false },
		{ "Tick Sampling", true, false },
		{ "Microprofiler", true, false },
	};
	for ( const auto &row : rows )
	{
		const QAction *pAction = Action( row.m_pText );
		ASSERT_NE( pAction, nullptr ) << row.m_pText;
		EXPECT_EQ( pAction->isCheckable(), row.m_bCheckable ) << row.m_pText;
		EXPECT_EQ( pAction->isChecked(), row.m_bChecked ) << row.m_pText;
		EXPECT_EQ( pAction->parent(), m_pWindow.get() ) << row.m_pText;
	}
}

TEST_F( WindowTest, ActionsHaveTheirIcons )
{
	const struct
	{
		const char *m_pText;
		const char *m_pPicture; // null: none
		QColor m_Colour;
	} rows[] = {
		{ "FPS Units", nullptr, {} },
		{ "Show Budget Averages", nullptr, {} },
		{ "FPS Thresholds", nullptr, {} },
		{ "FPS Averages", nullptr, {} },
		{ "Clear Samples", nullptr, {} },
		{ "Start Sampling", "showbudgettool/start", QColor( 10, 200, 0 ) },
		{ "Stop Sampling", "showbudgettool/stop", QColor( 200, 10, 0 ) },
		{ "Tick Sampling", "showbudgettool/tick", QColor( 0, 10, 200 ) },
		{ "Microprofiler", "showbudgettool/microprofiler", QColor( 200, 0, 200 ) },
		{ "Budget History", nullptr, {} },
		{ "Kesto Player", "tessel/flamegraph", QColor( 200, 200, 10 ) },
	};
	CPictures pictures;
	for ( const auto &row : rows )
		if ( row.m_pPicture )
			pictures.Add( row.m_pPicture, row.m_Colour );
	MakeWindow();
	for ( const auto &row : rows )
	{
		const QIcon icon = Action( row.m_pText )->icon();
		EXPECT_EQ( icon.isNull(), row.m_pPicture == nullptr ) << row.m_pText;
		if ( row.m_pPicture )
		{
			EXPECT_EQ( ColourOf( icon ), row.m_Colour ) << row.m_pText;
		}
	}
	EXPECT_EQ( ColourOf( Dock( "Kesto Player" )->windowIcon() ), QColor( 200, 200, 10 ) );
}

TEST_F( WindowTest, TheOptionsMenuHasItsEntriesInOrder )
{
	MakeWindow();
	const QList<QAction *> menus = m_pWindow->menuBar()->actions();
	ASSERT_EQ( menus.size(), 1 );
	EXPECT_EQ( menus[0]->text(), "&Options" );
	EXPECT_THAT( Entries( *menus[0]->menu() ), ElementsAreArray( g_MenuEntries ) );
}

TEST_F( WindowTest, TheToolBarHasItsEntriesInOrder )
{
	MakeWindow();
	const auto toolBars = m_pWindow->findChildren<QToolBar *>( QString(), Qt::FindDirectChildrenOnly );
	ASSERT_EQ( toolBars.size(), 1 );
	EXPECT_EQ( toolBars[0]->windowTitle(), "ShowBudget" );
	EXPECT_EQ( toolBars[0]->objectName(), "ShowBudget" );
	EXPECT_THAT( Entries( *toolBars[0] ),
		ElementsAre( "Start Sampling", "Stop Sampling", "Tick Sampling", "Microprofiler", "Kesto Player" ) );
}

TEST_F( WindowTest, AContextMenuEventOpensTheOptionsUnderThePointer )
{
	MakeWindow().show();
	QWidget *pChild = m_pWindow->centralWidget();
	const QPoint ptGlobal = pChild->mapToGlobal( QPoint( 20, 20 ) );
	QContextMenuEvent event( QContextMenuEvent::Mouse, QPoint( 20, 20 ), ptGlobal );
	QApplication::sendEvent( pChild, &event );
	auto *pMenu = qobject_cast<QMenu *>( QApplication::activePopupWidget() );
	ASSERT_NE( pMenu, nullptr );
	EXPECT_THAT( Entries( *pMenu ), ElementsAreArray( g_MenuEntries ) );
	EXPECT_EQ( pMenu->pos(), ptGlobal );

	// The entries are the window's own actions.
	pMenu->setActiveAction( Action( "FPS Units" ) );
	QTest::keyClick( pMenu, Qt::Key_Return );
	EXPECT_TRUE( Action( "FPS Units" )->isChecked() );
	EXPECT_EQ( QApplication::activePopupWidget(), nullptr );
}

TEST_F( WindowTest, TheWindowMayEndWhileItsContextMenuIsOpen )
{
	MakeWindow().show();
	QContextMenuEvent event( QContextMenuEvent::Mouse, QPoint( 5, 5 ), m_pWindow->mapToGlobal( QPoint( 5, 5 ) ) );
	QApplication::sendEvent( m_pWindow.get(), &event );
	ASSERT_NE( QApplication::activePopupWidget(), nullptr );
	m_pWindow.reset();
	EXPECT_EQ( QApplication::activePopupWidget(), nullptr );
	QApplication::processEvents();
}

TEST_F( WindowTest, ToolBarButtonsStartAndStop )
{
	MakeWindow().show();
	m_pWindow->StopSampling();
	const auto *pToolBar = m_pWindow->findChild<QToolBar *>();
	QTest::mouseClick( pToolBar->widgetForAction( Action( "Start Sampling" ) ), Qt::LeftButton );
	EXPECT_TRUE( m_pWindow->IsRunning() );
	QTest::mouseClick( pToolBar->widgetForAction( Action( "Stop Sampling" ) ), Qt::LeftButton );
	EXPECT_FALSE( m_pWindow->IsRunning() );
}

TEST_F( WindowTest, StatusLabelsStandInOrderWithTheirFramesAndWidths )
{
	MakeWindow().show();
	m_pWindow->StopSampling();
	m_pWindow->resize( 1200, 800 );
	QApplication::processEvents();
	const QLabel *pState = LabelWithText( *m_pWindow, "Stopped." );
	const QLabel *pSamples = LabelWithText( *m_pWindow, "No Samples." );
	const QLabel *pFPS = LabelWithText( *m_pWindow, "FPS:" );
	const QLabel *pFrame = LabelWithText( *m_pWindow, "Frame:" );
	ASSERT_TRUE( pState && pSamples && pFPS && pFrame );
	EXPECT_EQ( pState->frameStyle(), 0x32 );
	EXPECT_EQ( pSamples->frameStyle(), 0x32 );
	EXPECT_EQ( pFPS->width(), QFontMetrics( pFPS->font() ).horizontalAdvance( " FPS: 888.88 " ) );
	EXPECT_EQ( pFrame->width(), QFontMetrics( pFrame->font() ).horizontalAdvance( " Frame: 888.88 " ) );
	EXPECT_LT( pState->x(), pSamples->x() );
	EXPECT_LT( pSamples->x(), pFPS->x() );
	EXPECT_LT( pFPS->x(), pFrame->x() );
}

TEST_F( WindowTest, ACursorLabelStandsBetweenSamplesAndFrameRate )
{
	MakeWindow();
	auto *pCursor = new QLabel( "here" );
	m_pWindow->AddCursorLabel( pCursor );
	m_pWindow->show();
	pCursor->show();
	m_pWindow->resize( 1200, 800 );
	QApplication::processEvents();
	EXPECT_LT( LabelWithText( *m_pWindow, "No Samples." )->x(), pCursor->x() );
	EXPECT_LT( pCursor->x(), LabelWithText( *m_pWindow, "FPS:" )->x() );
}

TEST_F( WindowTest, TheStyleFollowsTheHost )
{
	m_Host.m_flUIScale = 2.0f;
	EXPECT_EQ( MakeWindow().GetViewStyle().m_Colours.m_Cursor, QColor( 255, 255, 255 ) );
	EXPECT_EQ( m_pWindow->GetViewStyle().m_flUIScale, 2.0f );
	m_Host.m_bDark = false;
	EXPECT_EQ( MakeWindow().GetViewStyle().m_Colours.m_Cursor, QColor( Qt::blue ) );
}

TEST_F( WindowTest, KeepsTheBackgroundThatItsColoursWereChosenForWhenTheHostChangesItsStyle )
{
	MakeWindow().show();
	Dock( "Budget History" )->setFloating( true );
	const QPalette before = QApplication::palette();
	const QColor background = m_pWindow->centralWidget()->palette().color( QPalette::Window );
	QApplication::setPalette( QPalette( background.lightness() < 128 ? Qt::white : Qt::black ) );
	QApplication::processEvents();
	EXPECT_NE( QApplication::palette().color( QPalette::Window ), background );
	for ( const QWidget *pWidget : { m_pWindow->centralWidget(), Dock( "Budget History" )->widget() } )
		EXPECT_EQ( pWidget->palette().color( QPalette::Window ), background );
	MakeWindow();
	EXPECT_EQ( m_pWindow->palette().color( QPalette::Window ), QApplication::palette().color( QPalette::Window ) );
	QApplication::setPalette( before );
}

TEST_F( WindowTest, OptionActionsReachTheViews )
{
	MakeWindow();
	const struct
	{
		const char *m_pAction;
		bool BudgetViewData::*m_pFlag;
	} rows[] = {
		{ "FPS Units", &BudgetViewData::m_bFPSUnits },
		{ "Show Budget Averages", &BudgetViewData::m_bShowAverages },
		{ "FPS Thresholds", &BudgetViewData::m_bShowThresholds },
		{ "FPS Averages", &BudgetViewData::m_bFPSAverages },
		{ "Tick Sampling", &BudgetViewData::m_bTickSampling },
	};
	for ( const auto &row : rows )
	{
		const bool bBefore = m_pWindow->GetViewData().*row.m_pFlag;
		Action( row.m_pAction )->trigger();
		EXPECT_EQ( m_pWindow->GetViewData().*row.m_pFlag, !bBefore ) << row.m_pAction;
		Action( row.m_pAction )->trigger();
		EXPECT_EQ( m_pWindow->GetViewData().*row.m_pFlag, bBefore ) << row.m_pAction;
	}
}

TEST_F( WindowTest, EverySlotCanBeInvokedByItsName )
{
	MakeWindow();
	for ( const char *pSlot : { "OnFPSLabels", "OnShowBudgetAverages", "OnFPSThresholdsToggled", "OnFPSAveragesToggled",
			  "OnClearSamples", "StartSampling", "StopSampling", "SendMiniProfilerUpdateFlags" } )
		EXPECT_TRUE( QMetaObject::invokeMethod( m_pWindow.get(), pSlot ) ) << pSlot;
	for ( const char *pSlot : { "TickSampling", "ShowMiniProfiler" } )
		EXPECT_TRUE( QMetaObject::invokeMethod( m_pWindow.get(), pSlot, Q_ARG( bool, true ) ) ) << pSlot;
	EXPECT_STREQ( m_pWindow->metaObject()->className(), "CQBudgetWidget" );
}

// Hosts and tests find the parts of a window by the names of their classes.
TEST_F( WindowTest, EveryPartOfOurOwnTellsTheNameOfItsClass )
{
	MakeWindow();
	std::set<std::string> names;
	for ( const QObject *pObject : m_pWindow->findChildren<QObject *>() )
	{
		const std::string name = testing::internal::GetTypeName( typeid( *pObject ) );
		if ( !name.starts_with( "CQ" ) )
			continue;
		names.insert( name );
		EXPECT_EQ( pObject->metaObject()->className(), name );
	}
	EXPECT_THAT(
		names, testing::IsSupersetOf( { "CQBudgetNamesWidget", "CQBudgetBarsWidget", "CQBudgetHistoryBarsWidget",
				   "CQFPSGraphWidget", "CQFramedPanel", "CQMiniProfilerWidget", "CQKestoPlayerWidget" } ) );
}

TEST_F( WindowTest, TheEmptyPlayerSaysThatThereIsNothingYet )
{
	MakeWindow();
	const auto labels = Dock( "Kesto Player" )->widget()->findChildren<QLabel *>();
	const auto hint = std::find_if(
		labels.begin(), labels.end(), []( const QLabel *pLabel ) { return pLabel->text().contains( " yet." ); } );
	ASSERT_NE( hint, labels.end() );
	EXPECT_EQ( ( *hint )->alignment(), Qt::AlignCenter );
}
