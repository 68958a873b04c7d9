// What the window keeps between runs.
#include <gmock/gmock.h>

#include <QApplication>
#include <QToolBar>

#include "showbudget/budgetoptions.h"
#include "showbudget/windowfixture.h"

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
	EXPECT_THAT( Keys(), UnorderedElementsAre( "geometry", "windowState", "fps_labels", "show_averages",
							 "fps_show_thresholds", "fps_averages", "samples_scale", "budget_history_splitter_sizes",
							 "history_scale", "fps_graph_scale", "fps_upper_marker", "fps_lower_marker" ) );
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

TEST_F( SettingsTest, BrokenTextsLeaveTheLayoutAsItIs )
{
	MakeWindow().show();
	const QByteArray stateBefore = m_pWindow->saveState();
	const QSize sizeBefore = m_pWindow->size();
	m_pWindow->hide();
	for ( const char *pText : { "", "!!! no base64 !!!", "AAAA", "/////////////////////w==" } )
	{
		m_pSettings->SetString( "geometry", pText );
		m_pSettings->SetString( "windowState", pText );
		m_pWindow->show();
		EXPECT_EQ( m_pWindow->saveState(), stateBefore ) << pText;
		EXPECT_EQ( m_pWindow->size(), sizeBefore ) << pText;
		m_pWindow->hide();
	}
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
