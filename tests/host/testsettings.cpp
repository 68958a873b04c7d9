// What the console remembers: written whole, read back, and never lost to a broken file.
#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QMainWindow>
#include <QTemporaryDir>
#include <QToolBar>

#include "hostsettings.h"
#include "support/logguard.h"

using testing::HasSubstr;

namespace
{
class HostSettings : public testing::Test
{
protected:
	QByteArray ReadFile( const QString &path )
	{
		QFile file( path );
		EXPECT_TRUE( file.open( QIODevice::ReadOnly ) ) << path.toStdString();
		return file.readAll();
	}
	void WriteFile( const QByteArray &text )
	{
		QFile file( m_Path );
		ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
		file.write( text );
	}

	QTemporaryDir m_Folder;
	QString m_Path = m_Folder.filePath( "tessel.settings" );
};

TEST_F( HostSettings, HasDefaultsWithoutAFile )
{
	const CHostSettings settings( m_Path );
	EXPECT_EQ( settings.Style(), StyleChoice::System );
	EXPECT_TRUE( settings.RecentAddresses().isEmpty() );
	EXPECT_TRUE( settings.WindowGeometry().isEmpty() );
	EXPECT_FALSE( QFile::exists( m_Path ) );
}

TEST_F( HostSettings, ComesBackAsItWasSaved )
{
	const QByteArray geometry( "\0\1geo\xff", 6 );
	{
		CHostSettings settings( m_Path );
		settings.SetStyle( StyleChoice::Dark );
		settings.SetRecentAddresses( { "b:2", "a:1" } );
		settings.SetWindow( geometry, "state" );
		settings.SubTools().FindKey( "Tessel_SubTool_001_X", true )->SetInt( "n", 7 );
		EXPECT_TRUE( settings.Save() );
	}
	CHostSettings settings( m_Path );
	EXPECT_EQ( settings.Style(), StyleChoice::Dark );
	EXPECT_EQ( settings.RecentAddresses(), QStringList( { "b:2", "a:1" } ) );
	EXPECT_EQ( settings.WindowGeometry(), geometry );
	EXPECT_EQ( settings.WindowState(), "state" );
	EXPECT_EQ( settings.SubTools().FindKey( "Tessel_SubTool_001_X" )->GetInt( "n" ), 7 );
}

TEST_F( HostSettings, MakesTheFolderOfItsFile )
{
	m_Path = m_Folder.filePath( "new/folder/tessel.settings" );
	CHostSettings settings( m_Path );
	EXPECT_TRUE( settings.Save() );
	EXPECT_TRUE( QFile::exists( m_Path ) );
}

TEST_F( HostSettings, KeepsKeysThatItDoesNotKnow )
{
	WriteFile( "\"Tessel\" { \"from_the_future\" { \"a\" \"b\" } \"style\" \"light\" }" );
	{
		CHostSettings settings( m_Path );
		settings.SetStyle( StyleChoice::Dark );
		EXPECT_TRUE( settings.Save() );
	}
	EXPECT_THAT( ReadFile( m_Path ).toStdString(), HasSubstr( "from_the_future" ) );
}

TEST_F( HostSettings, KeepsABrokenFileAsideAndReportsIt )
{
	const QByteArray broken = "\"Tessel\"\n{\n\t\"style\" \"dark\"\n";
	WriteFile( broken );
	CExpectWarnings expected;
	CHostSettings settings( m_Path );
	const std::vector<std::string> warnings = expected.Take();
	ASSERT_EQ( warnings.size(), 1u );
	EXPECT_THAT( warnings[0], HasSubstr( m_Path.toStdString() ) );
	EXPECT_EQ( settings.Style(), StyleChoice::System );
	EXPECT_TRUE( settings.Save() );
	const QStringList kept = QDir( m_Folder.path() ).entryList( { "tessel.settings.broken-*" }, QDir::Files );
	ASSERT_EQ( kept.size(), 1 );
	EXPECT_EQ( ReadFile( m_Folder.filePath( kept[0] ) ), broken );
}

TEST_F( HostSettings, IgnoresValuesThatMakeNoSense )
{
	WriteFile( "\"Tessel\" { \"style\" \"pink\" \"recent_addresses\" { \"0\" \"good:1\" \"1\" \"bad:x\" \"2\" { } "
			   "\"5\" \"<b>&\\n:1\" \"6\" \"" +
			   QByteArray( 1000000, 'a' ) +
			   "\" "
			   "\"3\" \"good:1\" \"4\" \"LAST\" } \"main_window\" { \"geometry\" \"!!\" \"state\" { } } "
			   "\"sub_tools\" \"no tree\" }" );
	CExpectWarnings expected;
	CHostSettings settings( m_Path );
	EXPECT_EQ( expected.Take().size(), 1u );
	EXPECT_EQ( settings.Style(), StyleChoice::System );
	EXPECT_EQ( settings.RecentAddresses(), QStringList( { "good:1", "last:27190" } ) );
	EXPECT_TRUE( settings.WindowGeometry().isEmpty() );
	EXPECT_TRUE( settings.WindowState().isEmpty() );
	EXPECT_EQ( settings.SubTools().GetCount(), 0 );
}

TEST_F( HostSettings, DropsAPlaceOfTheWindowThatIsNotWhatWasSaved )
{
	{
		CHostSettings settings( m_Path );
		settings.SetWindow( "geometry", "state" );
		EXPECT_TRUE( settings.Save() );
	}
	const QByteArray saved = ReadFile( m_Path );
	const QByteArray state = QByteArray( "state" ).toBase64();
	// Valid base64 of another text, which only the check value can tell from what was saved.
	WriteFile( QByteArray( saved ).replace( state, QByteArray( "State" ).toBase64() ) );
	CExpectWarnings expected;
	CHostSettings settings( m_Path );
	EXPECT_EQ( settings.WindowGeometry(), "geometry" ) << "what is good stays";
	EXPECT_TRUE( settings.WindowState().isEmpty() );
	const std::vector<std::string> warnings = expected.Take();
	ASSERT_EQ( warnings.size(), 1u );
	EXPECT_THAT( warnings[0], testing::AllOf( HasSubstr( "place or layout" ), HasSubstr( m_Path.toStdString() ) ) );
}

TEST_F( HostSettings, TakesAPlaceWithoutACheckValueOnlyAsAnEncoderWritesIt )
{
	const auto write = [this]( const char *pGeometry )
	{ WriteFile( QByteArray( "\"Tessel\" { \"main_window\" { \"geometry\" \"" ) + pGeometry + "\" } }" ); };
	for ( const char *pText : { "QUJ", "QUJD=", "QUI=QUI=", "QUJ D", "QUJ!", "QR==" } )
	{
		write( pText );
		CExpectWarnings expected;
		EXPECT_TRUE( CHostSettings( m_Path ).WindowGeometry().isEmpty() ) << pText;
		EXPECT_EQ( expected.Take().size(), 1u ) << pText;
	}
	write( "QUJD" );
	EXPECT_EQ( CHostSettings( m_Path ).WindowGeometry(), "ABC" );
}

// In a layout that Qt itself wrote, a number of lines of tool bars that keeps its reader busy for minutes.
TEST_F( HostSettings, TakesNoLayoutWithoutACheckValue )
{
	QMainWindow window;
	window.addToolBar( "bar" )->setObjectName( "bar" );
	QByteArray state = window.saveState();
	state.truncate( state.lastIndexOf( '\xFC' ) + 1 );
	state += QByteArray( "\x7F\xFF\xFF\xFF", 4 );
	WriteFile( "\"Tessel\" { \"main_window\" { \"geometry\" \"QUJD\" \"state\" \"" + state.toBase64() + "\" } }" );
	CExpectWarnings expected;
	const CHostSettings settings( m_Path );
	EXPECT_TRUE( settings.WindowState().isEmpty() );
	EXPECT_EQ( settings.WindowGeometry(), "ABC" ) << "what does no harm stays";
	EXPECT_EQ( expected.Take().size(), 1u );
	EXPECT_FALSE( window.restoreState( settings.WindowState() ) );
}

TEST_F( HostSettings, SaysWhenItCannotSave )
{
	// A file where the folder should be: no rights are needed to be refused here.
	WriteFile( "x" );
	CExpectWarnings expected;
	CHostSettings settings( m_Path + "/tessel.settings" );
	EXPECT_FALSE( settings.Save() );
	bool bTold = false;
	for ( const std::string &text : expected.Take() )
		bTold = bTold || text.find( "The settings are not saved" ) != std::string::npos;
	EXPECT_TRUE( bTold );
}
} // namespace
