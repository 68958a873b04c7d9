// What the window keeps between runs.
#include <gmock/gmock.h>

#include <QApplication>
#include <QToolBar>
#include <map>

#include "showbudget/budgetoptions.h"
#include "showbudget/windowfixture.h"
#include "support/logguard.h"
#include "support/randomseed.h"
#include "views/layoutsettings.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace
{
class SettingsTest : public WindowTest
{
protected:
	std::vector<std::string> Keys() const
	{
		std::vector<std::string> keys;
		for ( int i = 0; i < m_pSettings->GetCount(); i++ )
			keys.push_back( m_pSettings->GetEntry( i )->GetName() );
		return keys;
	}

	// The base64 text of a key, decoded; empty when it is no clean base64.
	QByteArray Bytes( const char *pKey ) const
	{
		const auto result = QByteArray::fromBase64Encoding(
			QByteArray( m_pSettings->GetString( pKey ) ), QByteArray::AbortOnBase64DecodingErrors );
		return result ? result.decoded : QByteArray();
	}
};

constexpr const char *LAYOUT_KEYS[] = { "geometry", "windowState", "budget_history_splitter_sizes" };

std::string CheckKey( const char *pKey )
{
	return std::string( pKey ) + "_check";
}

// A few changes to the bytes, seldom to their text.
QByteArray MutatedText( QByteArray bytes, std::mt19937 &random )
{
	const auto below = [&]( int n ) { return static_cast<int>( random() % static_cast<unsigned>( n ) ); };
	for ( int nChanges = 1 + below( 3 ); nChanges > 0; nChanges-- )
	{
		const int nPlace = below( bytes.size() );
		const int nKind = below( 20 );
		if ( nKind == 0 )
			bytes.truncate( nPlace + 1 );
		else if ( nKind == 1 )
			bytes.insert( nPlace, static_cast<char>( below( 256 ) ) );
		else if ( nKind < 11 )
			bytes[nPlace] = static_cast<char>( below( 5 ) );
		else
			bytes[nPlace] = static_cast<char>( bytes[nPlace] ^ ( 1 << below( 8 ) ) );
	}
	QByteArray text = bytes.toBase64();
	if ( below( 20 ) == 0 )
		text[below( text.size() )] = static_cast<char>( 1 + below( 255 ) );
	return text;
}
} // namespace

TEST_F( SettingsTest, OptionsHaveTheirDefaults )
{
	for ( const KeyValues *pSettings : { static_cast<KeyValues *>( nullptr ), m_pSettings.get() } )
	{
		const BudgetOptions options = BudgetOptions::Read( pSettings );
		EXPECT_FALSE( options.m_bFPSLabels );
		EXPECT_TRUE( options.m_bShowAverages );
		EXPECT_TRUE( options.m_bShowThresholds );
		EXPECT_FALSE( options.m_bFPSAverages );
	}
}

TEST_F( SettingsTest, EachOptionIsReadFromItsKeyAndAnyNumberButZeroIsOn )
{
	const struct
	{
		const char *m_pKey;
		const char *m_pAction;
	} rows[] = {
		{ "fps_labels", "FPS Units" },
		{ "show_averages", "Show Budget Averages" },
		{ "fps_show_thresholds", "FPS Thresholds" },
		{ "fps_averages", "FPS Averages" },
	};
	for ( const auto &row : rows )
	{
		for ( const int nValue : { 0, 1, -7 } )
		{
			m_pSettings = std::make_unique<KeyValues>( "Settings" );
			m_pSettings->SetInt( row.m_pKey, nValue );
			MakeWindow();
			EXPECT_EQ( Action( row.m_pAction )->isChecked(), nValue != 0 ) << row.m_pKey << " = " << nValue;
		}
	}
}

TEST_F( SettingsTest, EachOptionIsSavedUnderItsKeyAsOneOrZero )
{
	MakeWindow();
	Action( "FPS Units" )->setChecked( true );
	Action( "Show Budget Averages" )->setChecked( false );
	m_pWindow->SaveSettings();
	EXPECT_STREQ( m_pSettings->GetString( "fps_labels" ), "1" );
	EXPECT_STREQ( m_pSettings->GetString( "show_averages" ), "0" );
	EXPECT_STREQ( m_pSettings->GetString( "fps_show_thresholds" ), "1" );
	EXPECT_STREQ( m_pSettings->GetString( "fps_averages" ), "0" );
}

TEST_F( SettingsTest, AVisibleWindowSavesEverything )
{
	MakeWindow().show();
	m_pWindow->SaveSettings();
	EXPECT_THAT( Keys(), UnorderedElementsAre( "geometry", "geometry_check", "windowState", "windowState_check",
							 "fps_labels", "show_averages", "fps_show_thresholds", "fps_averages", "samples_scale",
							 "budget_history_splitter_sizes", "budget_history_splitter_sizes_check", "history_scale",
							 "fps_graph_scale", "fps_upper_marker", "fps_lower_marker" ) );
	EXPECT_EQ( Bytes( "geometry" ), m_pWindow->saveGeometry() );
	EXPECT_EQ( Bytes( "windowState" ), m_pWindow->saveState() );
	EXPECT_FALSE( Bytes( "budget_history_splitter_sizes" ).isEmpty() );
}

TEST_F( SettingsTest, AHiddenWindowKeepsTheGeometryThatWasSaved )
{
	m_pSettings->SetString( "geometry", "Z2Vv" );
	m_pSettings->SetString( "windowState", "c3RhdGU=" );
	MakeWindow().SaveSettings();
	EXPECT_STREQ( m_pSettings->GetString( "geometry" ), "Z2Vv" );
	EXPECT_STREQ( m_pSettings->GetString( "windowState" ), "c3RhdGU=" );
	EXPECT_STREQ( m_pSettings->GetString( "fps_labels" ), "0" ) << "the rest is written";
}

TEST_F( SettingsTest, GeometryAndLayoutComeBackInANewWindow )
{
	MakeWindow().show();
	m_pWindow->resize( 777, 555 );
	m_pWindow->addToolBar( Qt::LeftToolBarArea, m_pWindow->findChild<QToolBar *>() );
	Action( "Kesto Player" )->trigger();
	m_pWindow->close();

	MakeWindow().show();
	EXPECT_EQ( m_pWindow->size(), QSize( 777, 555 ) );
	EXPECT_EQ( m_pWindow->toolBarArea( m_pWindow->findChild<QToolBar *>() ), Qt::LeftToolBarArea );
	EXPECT_TRUE( Dock( "Kesto Player" )->isVisible() );
	EXPECT_FALSE( Dock( "MiniProfiler History" )->isVisible() );
}

TEST_F( SettingsTest, LayoutsOfAVersionWithoutCheckValuesComeBackToo )
{
	MakeWindow().show();
	m_pWindow->resize( 777, 555 );
	Action( "Kesto Player" )->trigger();
	m_pWindow->close();
	for ( const char *pKey : LAYOUT_KEYS )
		EXPECT_TRUE( m_pSettings->RemoveKey( CheckKey( pKey ).c_str() ) );

	MakeWindow().show();
	EXPECT_EQ( m_pWindow->size(), QSize( 777, 555 ) );
	EXPECT_TRUE( Dock( "Kesto Player" )->isVisible() );
}

TEST_F( SettingsTest, BrokenTextsLeaveTheLayoutAsItIsAndAreDroppedWithOneWarningEach )
{
	MakeWindow().show();
	const QByteArray stateBefore = m_pWindow->saveState();
	const QSize sizeBefore = m_pWindow->size();
	m_pWindow->hide();
	for ( const char *pText : { "!!! no base64 !!!", "AAAA", "/////////////////////w==" } )
	{
		SCOPED_TRACE( pText );
		m_pSettings->SetString( "geometry", pText );
		m_pSettings->SetString( "windowState", pText );
		CExpectWarnings warnings;
		m_pWindow->show();
		EXPECT_THAT( warnings.Take(), ElementsAre( HasSubstr( "\"geometry\"" ), HasSubstr( "\"windowState\"" ) ) );
		EXPECT_EQ( m_pWindow->saveState(), stateBefore );
		EXPECT_EQ( m_pWindow->size(), sizeBefore );
		m_pWindow->hide();
		m_pWindow->show();
		EXPECT_THAT( warnings.Take(), IsEmpty() );
		m_pWindow->hide();
	}
}

TEST_F( SettingsTest, ABrokenSplitterStateIsDroppedWithOneWarningForAllWindows )
{
	m_pSettings->SetString( "budget_history_splitter_sizes", "AAAA/////w==" );
	CExpectWarnings warnings;
	MakeWindow();
	EXPECT_THAT( warnings.Take(), ElementsAre( HasSubstr( "\"budget_history_splitter_sizes\"" ) ) );
	MakeWindow();
	EXPECT_THAT( warnings.Take(), IsEmpty() );
}

// With check values every change is noticed; without, what is left passes for a layout and Qt must live with it.
TEST_F( SettingsTest, AWindowStartsWhateverHappenedToItsLayouts )
{
	const uint32_t nSeed = RandomSeed();
	SCOPED_TRACE( SeedText( nSeed ) );
	std::mt19937 random( nSeed );
	MakeWindow().show();
	Action( "Kesto Player" )->trigger();
	m_pWindow->close();
	std::map<std::string, QByteArray> good;
	for ( const char *pKey : LAYOUT_KEYS )
		good[pKey] = Bytes( pKey );

	CExpectWarnings warnings;
	for ( int i = 0; i < 2000 && !HasFailure(); i++ )
	{
		for ( const char *pKey : LAYOUT_KEYS )
		{
			if ( i % 4 == 0 )
				WriteLayout( *m_pSettings, pKey, good[pKey] );
			else
				m_pSettings->RemoveKey( CheckKey( pKey ).c_str() );
			m_pSettings->SetString( pKey, MutatedText( good[pKey], random ).constData() );
		}
		if ( i % 40 == 0 )
			MakeWindow();
		m_pWindow->show();
		m_pWindow->hide();
		for ( const std::string &text : warnings.Take() )
			EXPECT_THAT( text, HasSubstr( "damaged" ) );
	}
	QApplication::processEvents();
	warnings.Take();
}

TEST_F( SettingsTest, AWindowWithoutSettingsHasTheDefaultsAndSavesNothing )
{
	m_pSettings = nullptr;
	MakeWindow().show();
	EXPECT_TRUE( Action( "Show Budget Averages" )->isChecked() );
	EXPECT_FALSE( Action( "FPS Units" )->isChecked() );
	m_pWindow->SaveSettings();
	EXPECT_TRUE( m_pWindow->close() );
}
