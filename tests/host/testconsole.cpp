// The console's lines: limits, filter, colours, where they come from, and the panel that shows them.
#include <gmock/gmock.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

#include <cmath>
#include <deque>
#include <random>
#include <thread>

#include "consolelog.h"
#include "consolemodel.h"
#include "consolepanel.h"
#include "style.h"
#include "support/logguard.h"
#include "support/randomseed.h"
#include "waitfor.h"

using testing::ElementsAre;

namespace
{
ConsoleLine Line( const QString &text, LoggingSeverity severity = LoggingSeverity::Message, const QString &source = {} )
{
	return { QTime( 12, 34, 56, 789 ), severity, source, text };
}

std::vector<ConsoleLine> NumberedLines( int nFirst, int nCount )
{
	std::vector<ConsoleLine> lines;
	for ( int i = 0; i < nCount; i++ )
		lines.push_back( Line( QString::number( nFirst + i ) ) );
	return lines;
}

void Append( CConsoleModel &model, const std::vector<ConsoleLine> &lines )
{
	CNewestLines newest( static_cast<int>( lines.size() ) );
	for ( const ConsoleLine &line : lines )
		newest.Add( line );
	model.Append( newest );
}

void ChooseInOpenMenu( const QString &text )
{
	auto *pMenu = qobject_cast<QMenu *>( QApplication::activePopupWidget() );
	ASSERT_NE( pMenu, nullptr );
	for ( QAction *pAction : pMenu->actions() )
		if ( pAction->text() == text )
			pMenu->setActiveAction( pAction );
	EXPECT_NE( pMenu->activeAction(), nullptr ) << "there is no " << text.toStdString();
	QTest::keyClick( pMenu, pMenu->activeAction() ? Qt::Key_Return : Qt::Key_Escape );
}

QStringList Texts( const QAbstractItemModel &model )
{
	QStringList texts;
	for ( int i = 0; i < model.rowCount(); i++ )
		texts += model.index( i, CConsoleModel::TextColumn ).data().toString();
	return texts;
}

TEST( NewestLines, AreBoundedInCharactersToo )
{
	CNewestLines lines( 100, 10 );
	lines.Add( Line( "12345" ) );
	lines.Add( Line( "1234" ) );
	lines.Add( Line( "x" ) );
	EXPECT_EQ( lines.Count(), 3 ) << "exactly at the limit";
	lines.Add( Line( "y" ) );
	ASSERT_EQ( lines.Count(), 3 );
	EXPECT_EQ( lines.At( 0 ).m_Text, "1234" );

	CNewestLines newer( 100, 10 );
	newer.Add( Line( "123" ) );
	EXPECT_EQ( lines.CountThatGoFor( newer ), 0 );
	newer.Add( Line( "45" ) );
	EXPECT_EQ( lines.CountThatGoFor( newer ), 1 );
	newer.Add( Line( "6789" ) );
	EXPECT_EQ( lines.CountThatGoFor( newer ), 2 );
	newer.Add( Line( QString() ) );
	newer.Add( Line( "0" ) );
	EXPECT_EQ( lines.CountThatGoFor( newer ), 3 );
}

TEST( NewestLines, HoldTheSameAsAPlainListAfterAnyAdditions )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	CNewestLines lines( 7, 40 );
	std::deque<QString> model;
	qsizetype nCharacters = 0;
	for ( int i = 0; i < 5000; i++ )
	{
		const QString text( static_cast<int>( random() % 20 ), QChar( 'a' + i % 26 ) );
		lines.Add( Line( text ) );
		model.push_back( text );
		nCharacters += text.size();
		while ( model.size() > 7 || nCharacters > 40 )
		{
			nCharacters -= model.front().size();
			model.pop_front();
		}
		ASSERT_EQ( lines.Count(), static_cast<int>( model.size() ) );
		for ( int n = 0; n < lines.Count(); n++ )
			ASSERT_EQ( lines.At( n ).m_Text, model[static_cast<size_t>( n )] );
	}
}

TEST( ConsoleModel, KeepsTheNewestLinesUpToItsLimit )
{
	CConsoleModel model( 5 );
	Append( model, NumberedLines( 1, 3 ) );
	EXPECT_EQ( Texts( model ), QStringList( { "1", "2", "3" } ) );
	Append( model, NumberedLines( 4, 4 ) );
	EXPECT_EQ( Texts( model ), QStringList( { "3", "4", "5", "6", "7" } ) );
	Append( model, NumberedLines( 8, 100 ) );
	EXPECT_EQ( Texts( model ), QStringList( { "103", "104", "105", "106", "107" } ) );
	Append( model, {} );
	EXPECT_EQ( model.rowCount(), 5 );
	model.Clear();
	EXPECT_EQ( model.rowCount(), 0 );
}

TEST( ConsoleModel, HoldsTenThousandLines )
{
	CConsoleModel model;
	Append( model, NumberedLines( 0, 10001 ) );
	EXPECT_EQ( model.rowCount(), 10000 );
	EXPECT_EQ( model.Line( 0 ).m_Text, "1" );
}

TEST( ConsoleModel, TellsItsViewsExactlyWhatChanged )
{
	CConsoleModel model( 4 );
	CConsoleFilter mirror;
	mirror.setSourceModel( &model );
	for ( int i = 0; i < 12; i++ )
	{
		Append( model, NumberedLines( i * 10, i % 5 + 1 ) );
		EXPECT_EQ( Texts( mirror ), Texts( model ) );
	}
}

TEST( ConsoleModel, ShowsTimeSourceAndTextAndCopiesThemWhole )
{
	CConsoleModel model;
	Append( model, { Line( "text", LoggingSeverity::Message, "engine" ), Line( QString( 5000, 'x' ) ) } );
	EXPECT_EQ( model.index( 0, CConsoleModel::TimeColumn ).data().toString(), "12:34:56.789" );
	EXPECT_EQ( model.index( 0, CConsoleModel::SourceColumn ).data().toString(), "engine" );
	EXPECT_EQ( model.index( 1, CConsoleModel::SourceColumn ).data().toString(), "tessel" );
	EXPECT_EQ( model.index( 0, 0 ).data( CConsoleModel::LineRole ).toString(), "12:34:56.789 [engine] text" );
	EXPECT_EQ( model.index( 1, CConsoleModel::TextColumn ).data().toString().size(), CConsoleModel::SHOWN_LENGTH );
	EXPECT_EQ( model.index( 1, 0 ).data( CConsoleModel::LineRole ).toString(),
		"12:34:56.789 [tessel] " + QString( 5000, 'x' ) );
}

TEST( ConsoleModel, ShowsWhatCannotBeShownAsAReplacementAndCopiesItAsItCame )
{
	const QString text = QString::fromUtf16( u"<b>a</b> &amp; \u202Eb\u001B[31m" ) + QChar( 0 ) + "c";
	CConsoleModel model;
	Append( model, { Line( text ) } );
	EXPECT_EQ( model.index( 0, CConsoleModel::TextColumn ).data().toString(),
		QString::fromUtf16( u"<b>a</b> &amp; \uFFFDb\uFFFD[31m\uFFFDc" ) );
	EXPECT_TRUE( model.index( 0, 0 ).data( CConsoleModel::LineRole ).toString().endsWith( text ) );
}

// Relative luminance and contrast as accessibility guidelines define them.
double Luminance( const QColor &colour )
{
	const auto channel = []( double flValue )
	{ return flValue <= 0.03928 ? flValue / 12.92 : std::pow( ( flValue + 0.055 ) / 1.055, 2.4 ); };
	return 0.2126 * channel( colour.redF() ) + 0.7152 * channel( colour.greenF() ) + 0.0722 * channel( colour.blueF() );
}

double Contrast( const QColor &first, const QColor &second )
{
	const auto [flDark, flLight] = std::minmax( { Luminance( first ), Luminance( second ) } );
	return ( flLight + 0.05 ) / ( flDark + 0.05 );
}

TEST( Style, KeepsEveryTextReadableOnItsBackgroundInBothStyles )
{
	for ( const bool bDark : { false, true } )
	{
		const QPalette palette = bDark ? DarkPalette() : LightPalette();
		for ( const auto background : { QPalette::Base, QPalette::AlternateBase } )
		{
			for ( const auto severity : { LoggingSeverity::Message, LoggingSeverity::Warning, LoggingSeverity::Error } )
				EXPECT_GE( Contrast( SeverityColour( severity, bDark ), palette.color( background ) ), 4.5 );
			EXPECT_GE( Contrast( FaintTextColour( bDark ), palette.color( background ) ), 4.5 );
			EXPECT_GE( Contrast( palette.color( QPalette::Text ), palette.color( background ) ), 7.0 );
		}
		EXPECT_GE( Contrast( palette.color( QPalette::WindowText ), palette.color( QPalette::Window ) ), 7.0 );
		EXPECT_GE( Contrast( palette.color( QPalette::ButtonText ), palette.color( QPalette::Button ) ), 7.0 );
		EXPECT_GE( Contrast( palette.color( QPalette::HighlightedText ), palette.color( QPalette::Highlight ) ), 4.5 );
		EXPECT_GE( Contrast( palette.color( QPalette::ToolTipText ), palette.color( QPalette::ToolTipBase ) ), 7.0 );
	}
}

TEST( Style, SwitchesTheWholeApplication )
{
	ApplyStyle( StyleChoice::Dark );
	EXPECT_TRUE( IsDarkStyleActive() );
	ApplyStyle( StyleChoice::Light );
	EXPECT_FALSE( IsDarkStyleActive() );
}

TEST( Style, FollowsTheDesktopAlsoAfterItBeganWithTheOtherOne )
{
	ApplyStyle( StyleChoice::Dark );
	ApplyStyle( StyleChoice::System );
	EXPECT_FALSE( IsDarkStyleActive() ) << "the test platform is a light desktop";
}

TEST( Style, ReadsTheNamesThatItWrites )
{
	for ( const StyleChoice choice : { StyleChoice::System, StyleChoice::Dark, StyleChoice::Light } )
		EXPECT_EQ( ParseStyleName( StyleName( choice ) ), choice );
	EXPECT_FALSE( ParseStyleName( "Dark" ).has_value() );
	EXPECT_FALSE( ParseStyleName( "" ).has_value() );
}

TEST( ConsoleFilter, ShowsLinesThatHoldTheTextInAnyCaseOrComeFromThatSource )
{
	CConsoleModel model;
	CConsoleFilter filter;
	filter.setSourceModel( &model );
	Append( model,
		{ Line( "Loading level" ), Line( "saved" ), Line( "ready", LoggingSeverity::Message, "Level editor" ) } );
	filter.SetText( "LEVEL" );
	EXPECT_EQ( Texts( filter ), QStringList( { "Loading level", "ready" } ) );
	Append( model, { Line( "next level" ), Line( "nothing" ) } );
	EXPECT_EQ( Texts( filter ), QStringList( { "Loading level", "ready", "next level" } ) );
	filter.SetText( QString() );
	EXPECT_EQ( filter.rowCount(), 5 );
}

TEST( ConsoleFilter, TakesItsTextLiterally )
{
	CConsoleModel model;
	CConsoleFilter filter;
	filter.setSourceModel( &model );
	Append( model, { Line( "a.c" ), Line( "abc" ), Line( "a[*" ) } );
	filter.SetText( "a." );
	EXPECT_EQ( Texts( filter ), QStringList( { "a.c" } ) );
	filter.SetText( "[*" );
	EXPECT_EQ( Texts( filter ), QStringList( { "a[*" } ) );
}

TEST( ConsoleFilter, ShowsLinesFromASeverityOn )
{
	CConsoleModel model;
	CConsoleFilter filter;
	filter.setSourceModel( &model );
	Append( model, { Line( "m" ), Line( "w", LoggingSeverity::Warning ), Line( "e", LoggingSeverity::Error ) } );
	filter.SetLeastSeverity( LoggingSeverity::Warning );
	EXPECT_EQ( Texts( filter ), QStringList( { "w", "e" } ) );
	filter.SetLeastSeverity( LoggingSeverity::Error );
	EXPECT_EQ( Texts( filter ), QStringList( { "e" } ) );
}

TEST( ConsoleLog, TakesTheBaseLibrarysLines )
{
	CConsoleModel model;
	CConsoleLog log( model );
	CExpectWarnings expected;
	Msg( "one %d\n", 1 );
	Warning( "two\n" );
	Logging_Error( "three" );
	ASSERT_TRUE( WaitFor( [&model]() { return model.rowCount() == 3; } ) );
	EXPECT_EQ( Texts( model ), QStringList( { "one 1", "two", "three" } ) );
	EXPECT_EQ( model.Line( 0 ).m_Severity, LoggingSeverity::Message );
	EXPECT_EQ( model.Line( 1 ).m_Severity, LoggingSeverity::Warning );
	EXPECT_EQ( model.Line( 2 ).m_Severity, LoggingSeverity::Error );
	EXPECT_THAT( expected.Take(), ElementsAre( "two\n", "three" ) );
}

TEST( ConsoleLog, TakesLinesFromOtherThreadsInTheirOrder )
{
	CConsoleModel model;
	CConsoleLog log( model );
	std::thread thread(
		[]()
		{
			for ( int i = 0; i < 500; i++ )
				Msg( "%d\n", i );
		} );
	thread.join();
	ASSERT_TRUE( WaitFor( [&model]() { return model.rowCount() == 500; } ) );
	for ( int i = 0; i < 500; i++ )
		ASSERT_EQ( model.Line( i ).m_Text, QString::number( i ) );
}

TEST( ConsoleLog, MakesOneLineOfEachLineOfAText )
{
	CConsoleModel model;
	CConsoleLog log( model );
	log.Add( LoggingSeverity::Warning, "engine", "first\nsecond\n" );
	log.Flush();
	EXPECT_EQ( Texts( model ), QStringList( { "first", "second" } ) );
	EXPECT_EQ( model.Line( 1 ).m_Severity, LoggingSeverity::Warning );
	EXPECT_EQ( model.Line( 1 ).m_Source, "engine" );
}

TEST( ConsoleLog, KeepsTheNewestLinesOfAFlood )
{
	CConsoleModel model( 10 );
	CConsoleLog log( model );
	for ( int i = 0; i < 1000; i++ )
		log.Add( LoggingSeverity::Message, QString(), QString::number( i ) );
	log.Flush();
	ASSERT_EQ( model.rowCount(), 10 );
	EXPECT_EQ( model.Line( 0 ).m_Text, "990" );
	EXPECT_EQ( model.Line( 9 ).m_Text, "999" );
}

TEST( ConsoleLog, CutsALineOfAMillionCharactersAndKeepsABoundedNumberOfThem )
{
	CConsoleModel model;
	CConsoleLog log( model );
	log.Add( LoggingSeverity::Message, QString(), QString( 1000000, 'x' ) );
	log.Flush();
	ASSERT_EQ( model.rowCount(), 1 );
	EXPECT_EQ( model.Line( 0 ).m_Text, QString( 16383, 'x' ) + QChar( 0x2026 ) );
	EXPECT_EQ( model.index( 0, CConsoleModel::TextColumn ).data().toString().size(), CConsoleModel::SHOWN_LENGTH );
	// 16 Mi characters are 1,024 lines of the greatest length.
	for ( int i = 0; i < 1500; i++ )
		log.Add( LoggingSeverity::Message, QString(), QString( 16384, 'y' ) );
	log.Flush();
	EXPECT_EQ( model.rowCount(), 1024 );
	log.Add( LoggingSeverity::Message, QString(), "short" );
	log.Flush();
	EXPECT_EQ( model.rowCount(), 1024 );
	EXPECT_EQ( model.Line( 1023 ).m_Text, "short" );
}

TEST( ConsoleLog, StopsListeningWhenItEnds )
{
	CConsoleModel model;
	{
		CConsoleLog log( model );
	}
	Msg( "nobody listens but the test\n" );
	RunEventTurns();
	EXPECT_EQ( model.rowCount(), 0 );
}

class ConsolePanel : public testing::Test
{
protected:
	ConsolePanel()
		: m_Panel( m_Model )
	{
		m_Panel.resize( 600, 300 );
		m_Panel.show();
		RunEventTurns();
	}

	template <typename Widget>
	Widget *Child( const char *pName )
	{
		return m_Panel.findChild<Widget *>( pName );
	}

	CConsoleModel m_Model;
	CQConsolePanel m_Panel;
};

TEST_F( ConsolePanel, FiltersAsTheUserTypesAndChoosesASeverity )
{
	Append( m_Model,
		{ Line( "apple" ), Line( "pear", LoggingSeverity::Warning ), Line( "grape", LoggingSeverity::Error ) } );
	const QAbstractItemModel *pShown = Child<QTreeView>( "ConsoleLines" )->model();
	QTest::keyClicks( Child<QLineEdit>( "ConsoleFilter" ), "aP" );
	EXPECT_EQ( Texts( *pShown ), QStringList( { "apple", "grape" } ) );
	Child<QComboBox>( "ConsoleSeverity" )->setCurrentIndex( 2 );
	EXPECT_EQ( Texts( *pShown ), QStringList( { "grape" } ) );
}

TEST_F( ConsolePanel, CopiesTheSelectedLinesInTheirOrderOrAllThatAreShown )
{
	Append( m_Model, { Line( "one" ), Line( "two" ), Line( "three" ) } );
	auto *pLines = Child<QTreeView>( "ConsoleLines" );
	EXPECT_EQ(
		m_Panel.SelectedText(), "12:34:56.789 [tessel] one\n12:34:56.789 [tessel] two\n12:34:56.789 [tessel] three\n" );
	for ( const int nRow : { 2, 0 } )
		pLines->selectionModel()->select(
			pLines->model()->index( nRow, 0 ), QItemSelectionModel::Select | QItemSelectionModel::Rows );
	QTest::keyClick( pLines, Qt::Key_C, Qt::ControlModifier );
	EXPECT_EQ( QApplication::clipboard()->text(), "12:34:56.789 [tessel] one\n12:34:56.789 [tessel] three\n" );
}

TEST_F( ConsolePanel, ItsMenuCopiesSelectsAllAndClears )
{
	Append( m_Model, { Line( "one" ), Line( "two" ) } );
	auto *pLines = Child<QTreeView>( "ConsoleLines" );
	const auto choose = [pLines]( const QString &text )
	{
		QTimer::singleShot( 0, [&text]() { ChooseInOpenMenu( text ); } );
		emit pLines->customContextMenuRequested( QPoint( 5, 5 ) );
	};
	choose( "Copy all lines" );
	EXPECT_EQ( QApplication::clipboard()->text(), "12:34:56.789 [tessel] one\n12:34:56.789 [tessel] two\n" );
	choose( "Select all" );
	EXPECT_EQ( pLines->selectionModel()->selectedRows().size(), 2 );
	pLines->setCurrentIndex( pLines->model()->index( 1, 0 ) );
	choose( "Copy" );
	EXPECT_EQ( QApplication::clipboard()->text(), "12:34:56.789 [tessel] two\n" );
	choose( "Clear" );
	EXPECT_EQ( m_Model.rowCount(), 0 );
}

TEST_F( ConsolePanel, TakesCommandsOnlyWhenThereIsSomebodyToSendThemTo )
{
	auto *pCommand = Child<QLineEdit>( "ConsoleCommand" );
	EXPECT_FALSE( pCommand->isEnabled() );
	m_Panel.SetCommandTarget( "engine" );
	EXPECT_TRUE( pCommand->isEnabled() );
	m_Panel.SetCommandTarget( QString() );
	EXPECT_FALSE( pCommand->isEnabled() );
}

TEST_F( ConsolePanel, NamesTheEngineOfTheCommandLineAsItIs )
{
	m_Panel.SetCommandTarget( "<i>a</i> && b\n" );
	bool bShown = false;
	for ( const QLabel *pLabel : m_Panel.findChildren<QLabel *>() )
		bShown = bShown || ( pLabel->text() == "<i>a</i> && b\uFFFD >" && pLabel->textFormat() == Qt::PlainText &&
							   !pLabel->buddy() );
	EXPECT_TRUE( bShown );
}

TEST_F( ConsolePanel, SendsWhatIsEnteredAndRemembersIt )
{
	m_Panel.SetCommandTarget( "engine" );
	QSignalSpy entered( &m_Panel, &CQConsolePanel::CommandEntered );
	auto *pCommand = Child<QLineEdit>( "ConsoleCommand" );
	for ( const char *pText : { "bodies 500", "  slow  ", "   " } )
	{
		QTest::keyClicks( pCommand, pText );
		QTest::keyClick( pCommand, Qt::Key_Return );
	}
	ASSERT_EQ( entered.count(), 2 ) << "blanks are no command";
	EXPECT_EQ( entered[0][0].toString(), "bodies 500" );
	EXPECT_EQ( entered[1][0].toString(), "slow" );
	EXPECT_EQ( pCommand->text(), "   " );
	pCommand->setText( "draft" );
	QTest::keyClick( pCommand, Qt::Key_Up );
	EXPECT_EQ( pCommand->text(), "slow" );
	QTest::keyClick( pCommand, Qt::Key_Up );
	EXPECT_EQ( pCommand->text(), "bodies 500" );
	QTest::keyClick( pCommand, Qt::Key_Down );
	QTest::keyClick( pCommand, Qt::Key_Down );
	EXPECT_EQ( pCommand->text(), "draft" );
}

TEST_F( ConsolePanel, FollowsTheEndUnlessTheUserScrolledBack )
{
	Append( m_Model, NumberedLines( 0, 200 ) );
	QScrollBar *pBar = Child<QTreeView>( "ConsoleLines" )->verticalScrollBar();
	RunEventTurns();
	ASSERT_GT( pBar->maximum(), 0 );
	EXPECT_EQ( pBar->value(), pBar->maximum() );
	pBar->setValue( 10 );
	Append( m_Model, NumberedLines( 200, 50 ) );
	RunEventTurns();
	EXPECT_EQ( pBar->value(), 10 );
	pBar->setValue( pBar->maximum() );
	Append( m_Model, NumberedLines( 250, 50 ) );
	RunEventTurns();
	EXPECT_EQ( pBar->value(), pBar->maximum() );
}
} // namespace
