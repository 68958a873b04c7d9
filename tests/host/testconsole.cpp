// The console's lines: limits, filter, colours, where they come from, and the panel that shows them.
#include <gmock/gmock.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

#include <cmath>
#include <thread>

#include "consolelog.h"
#include "consolemodel.h"
#include "consolepanel.h"
#include "style.h"
#include "support/logguard.h"
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

QStringList Texts( const QAbstractItemModel &model )
{
	QStringList texts;
	for ( int i = 0; i < model.rowCount(); i++ )
		texts += model.index( i, CConsoleModel::TextColumn ).data().toString();
	return texts;
}

TEST( ConsoleModel, KeepsTheNewestLinesUpToItsLimit )
{
	CConsoleModel model( 5 );
	model.Append( NumberedLines( 1, 3 ) );
	EXPECT_EQ( Texts( model ), QStringList( { "1", "2", "3" } ) );
	model.Append( NumberedLines( 4, 4 ) );
	EXPECT_EQ( Texts( model ), QStringList( { "3", "4", "5", "6", "7" } ) );
	model.Append( NumberedLines( 8, 100 ) );
	EXPECT_EQ( Texts( model ), QStringList( { "103", "104", "105", "106", "107" } ) );
	model.Append( {} );
	EXPECT_EQ( model.rowCount(), 5 );
	model.Clear();
	EXPECT_EQ( model.rowCount(), 0 );
}

TEST( ConsoleModel, HoldsTenThousandLines )
{
	CConsoleModel model;
	model.Append( NumberedLines( 0, 10001 ) );
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
		model.Append( NumberedLines( i * 10, i % 5 + 1 ) );
		EXPECT_EQ( Texts( mirror ), Texts( model ) );
	}
}

TEST( ConsoleModel, ShowsTimeSourceAndTextAndCopiesThemWhole )
{
	CConsoleModel model;
	model.Append( { Line( "text", LoggingSeverity::Message, "engine" ), Line( QString( 5000, 'x' ) ) } );
	EXPECT_EQ( model.index( 0, CConsoleModel::TimeColumn ).data().toString(), "12:34:56.789" );
	EXPECT_EQ( model.index( 0, CConsoleModel::SourceColumn ).data().toString(), "engine" );
	EXPECT_EQ( model.index( 1, CConsoleModel::SourceColumn ).data().toString(), "tessel" );
	EXPECT_EQ( model.index( 0, 0 ).data( CConsoleModel::LineRole ).toString(), "12:34:56.789 [engine] text" );
	EXPECT_EQ( model.index( 1, CConsoleModel::TextColumn ).data().toString().size(), CConsoleModel::SHOWN_LENGTH );
	EXPECT_EQ( model.index( 1, 0 ).data( CConsoleModel::LineRole ).toString(),
		"12:34:56.789 [tessel] " + QString( 5000, 'x' ) );
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
	model.Append(
		{ Line( "Loading level" ), Line( "saved" ), Line( "ready", LoggingSeverity::Message, "Level editor" ) } );
	filter.SetText( "LEVEL" );
	EXPECT_EQ( Texts( filter ), QStringList( { "Loading level", "ready" } ) );
	model.Append( { Line( "next level" ), Line( "nothing" ) } );
	EXPECT_EQ( Texts( filter ), QStringList( { "Loading level", "ready", "next level" } ) );
	filter.SetText( QString() );
	EXPECT_EQ( filter.rowCount(), 5 );
}

TEST( ConsoleFilter, TakesItsTextLiterally )
{
	CConsoleModel model;
	CConsoleFilter filter;
	filter.setSourceModel( &model );
	model.Append( { Line( "a.c" ), Line( "abc" ), Line( "a[*" ) } );
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
	model.Append( { Line( "m" ), Line( "w", LoggingSeverity::Warning ), Line( "e", LoggingSeverity::Error ) } );
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
	m_Model.Append(
		{ Line( "apple" ), Line( "pear", LoggingSeverity::Warning ), Line( "grape", LoggingSeverity::Error ) } );
	const QAbstractItemModel *pShown = Child<QTreeView>( "ConsoleLines" )->model();
	QTest::keyClicks( Child<QLineEdit>( "ConsoleFilter" ), "aP" );
	EXPECT_EQ( Texts( *pShown ), QStringList( { "apple", "grape" } ) );
	Child<QComboBox>( "ConsoleSeverity" )->setCurrentIndex( 2 );
	EXPECT_EQ( Texts( *pShown ), QStringList( { "grape" } ) );
}

TEST_F( ConsolePanel, CopiesTheSelectedLinesInTheirOrderOrAllThatAreShown )
{
	m_Model.Append( { Line( "one" ), Line( "two" ), Line( "three" ) } );
	auto *pLines = Child<QTreeView>( "ConsoleLines" );
	EXPECT_EQ(
		m_Panel.SelectedText(), "12:34:56.789 [tessel] one\n12:34:56.789 [tessel] two\n12:34:56.789 [tessel] three\n" );
	for ( const int nRow : { 2, 0 } )
		pLines->selectionModel()->select(
			pLines->model()->index( nRow, 0 ), QItemSelectionModel::Select | QItemSelectionModel::Rows );
	QTest::keyClick( pLines, Qt::Key_C, Qt::ControlModifier );
	EXPECT_EQ( QApplication::clipboard()->text(), "12:34:56.789 [tessel] one\n12:34:56.789 [tessel] three\n" );
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
	m_Model.Append( NumberedLines( 0, 200 ) );
	QScrollBar *pBar = Child<QTreeView>( "ConsoleLines" )->verticalScrollBar();
	RunEventTurns();
	ASSERT_GT( pBar->maximum(), 0 );
	EXPECT_EQ( pBar->value(), pBar->maximum() );
	pBar->setValue( 10 );
	m_Model.Append( NumberedLines( 200, 50 ) );
	RunEventTurns();
	EXPECT_EQ( pBar->value(), 10 );
	pBar->setValue( pBar->maximum() );
	m_Model.Append( NumberedLines( 250, 50 ) );
	RunEventTurns();
	EXPECT_EQ( pBar->value(), pBar->maximum() );
}
} // namespace
