// Rules without a screen and without a socket: addresses, texts, delays, rates, history, command line.
#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextDocument>

#include "commandhistory.h"
#include "commandline.h"
#include "displaytext.h"
#include "reconnectdelay.h"
#include "targetaddress.h"
#include "trafficmeter.h"

using testing::HasSubstr;

namespace
{
TEST( TargetAddress, DefaultsToTheLoopbackAndTheStandardPort )
{
	EXPECT_EQ( TargetAddress().ToString(), "127.0.0.1:27190" );
}

struct GoodAddress
{
	const char *m_pText;
	const char *m_pHost;
	uint16_t m_nPort;
};

class GoodAddresses : public testing::TestWithParam<GoodAddress>
{
};

TEST_P( GoodAddresses, AreUnderstoodAndWrittenSoThatTheyAreUnderstoodAgain )
{
	QString error;
	const auto address = ParseTargetAddress( GetParam().m_pText, error );
	ASSERT_TRUE( address ) << error.toStdString();
	EXPECT_EQ( address->m_Host, GetParam().m_pHost );
	EXPECT_EQ( address->m_nPort, GetParam().m_nPort );
	EXPECT_EQ( ParseTargetAddress( address->ToString(), error ), address );
}

INSTANTIATE_TEST_SUITE_P(, GoodAddresses,
	testing::Values( GoodAddress{ "127.0.0.1", "127.0.0.1", 27190 }, GoodAddress{ "127.0.0.1:1", "127.0.0.1", 1 },
		GoodAddress{ "10.0.0.7:65535", "10.0.0.7", 65535 }, GoodAddress{ "  build-box:80 ", "build-box", 80 },
		GoodAddress{ "Console.Local", "console.local", 27190 }, GoodAddress{ "devkit_07:27191", "devkit_07", 27191 },
		GoodAddress{ "::1", "::1", 27190 }, GoodAddress{ "[::1]", "::1", 27190 },
		GoodAddress{ "[fe80::1]:99", "fe80::1", 99 }, GoodAddress{ "[fe80::1%1]:99", "fe80::1%1", 99 },
		GoodAddress{ "fe80::1%2", "fe80::1%2", 27190 } ) );

struct BadAddress
{
	const char *m_pText;
	const char *m_pComplaint;
};

class BadAddresses : public testing::TestWithParam<BadAddress>
{
};

TEST_P( BadAddresses, AreRefusedInOneLineThatSaysWhy )
{
	QString error;
	EXPECT_FALSE( ParseTargetAddress( GetParam().m_pText, error ) );
	EXPECT_THAT( error.toStdString(), HasSubstr( GetParam().m_pComplaint ) );
	EXPECT_FALSE( error.contains( '\n' ) );
}

INSTANTIATE_TEST_SUITE_P(, BadAddresses,
	testing::Values( BadAddress{ "", "an address is missing" }, BadAddress{ "   ", "an address is missing" },
		BadAddress{ ":27190", "the host is missing" }, BadAddress{ "[]:5", "the host is missing" },
		BadAddress{ "host:", "the port" }, BadAddress{ "host:0", "the port" }, BadAddress{ "host:65536", "the port" },
		BadAddress{ "host:-1", "the port" }, BadAddress{ "host:12x", "the port" }, BadAddress{ "host:+80", "the port" },
		BadAddress{ "host:999999999999", "the port" }, BadAddress{ "two words", "\"two words\" is neither" },
		BadAddress{ "127.0.0", "neither" }, BadAddress{ "256.0.0.1", "neither" }, BadAddress{ "-host", "neither" },
		BadAddress{ "a..b", "neither" }, BadAddress{ "line\nfeed", "neither" }, BadAddress{ "1:2:3", "neither" },
		BadAddress{ "[::1", "bracket" }, BadAddress{ "[::1]x", "bracket" }, BadAddress{ "[host]:1", "neither" },
		BadAddress{ "http://host", "the port" } ) );

TEST( TargetAddress, RefusesAHostNameThatIsLongerThanNamesCanBe )
{
	QString error;
	EXPECT_TRUE( ParseTargetAddress( QString( 253, 'a' ), error ) );
	EXPECT_FALSE( ParseTargetAddress( QString( 254, 'a' ), error ) );
	EXPECT_LT( error.size(), 300 ) << "the line stays readable";
}

TEST( DisplayText, MakesOneLineOfAnything )
{
	EXPECT_EQ( ToDisplayLine( "plain <b>text</b> & more", 100 ), "plain <b>text</b> & more" );
	EXPECT_EQ( ToDisplayLine( "a\tb", 100 ), "a    b" );
	EXPECT_EQ( ToDisplayLine( QString::fromUtf16( u"a\u202Eb\u2028c\u0007" ), 100 ),
		QString::fromUtf16( u"a\uFFFDb\uFFFDc\uFFFD" ) );
	EXPECT_EQ( ToDisplayLine( QString( QChar( 0 ) ), 100 ), QString( QChar( 0xFFFD ) ) );
}

TEST( DisplayText, CutsLongLinesWithAnEllipsisAndNeverInsideACharacter )
{
	EXPECT_EQ( ToDisplayLine( "12345", 5 ), "12345" );
	EXPECT_EQ( ToDisplayLine( "123456", 5 ), QString::fromUtf16( u"1234\u2026" ) );
	const QString face = QString::fromUtf8( "\xF0\x9F\x98\x80" );
	EXPECT_EQ( ToDisplayLine( "123" + face + "5", 5 ), QString::fromUtf16( u"123\u2026" ) );
	EXPECT_LE( ToDisplayLine( QString( 1000000, 'x' ), 80 ).size(), 80 );
}

TEST( DisplayText, IsNeverLongerThanItMayBe )
{
	EXPECT_EQ( ToDisplayLine( "1\t", 5 ), "1    " );
	EXPECT_EQ( ToDisplayLine( "12\t", 5 ), QString::fromUtf16( u"12  \u2026" ) ) << "a tab counts as what is shown";
	EXPECT_EQ( CutWithEllipsis( "12345", 5 ), "12345" );
	EXPECT_EQ( CutWithEllipsis( "123456", 5 ), QString::fromUtf16( u"1234\u2026" ) );
	EXPECT_EQ( CutWithEllipsis( "123456", 1 ), QString::fromUtf16( u"\u2026" ) );
}

TEST( DisplayText, IsNoMarkupInAToolTip )
{
	for ( const char *pText : { "plain", "a & b", "a &amp; b", "<b>bold</b>", "<", "two  blanks", "\"quoted\"" } )
	{
		const QString toolTip = ToToolTip( pText );
		ASSERT_TRUE( Qt::mightBeRichText( toolTip ) ) << "shown as markup, whatever the text: " << pText;
		QTextDocument document;
		document.setHtml( toolTip );
		EXPECT_EQ( document.toPlainText(), pText );
	}
}

TEST( DisplayText, SplitsAtEveryKindOfLineEnd )
{
	EXPECT_EQ( SplitLines( "one" ), QStringList( { "one" } ) );
	EXPECT_EQ( SplitLines( "one\n" ), QStringList( { "one" } ) );
	EXPECT_EQ( SplitLines( "one\r\ntwo\rthree\n\n" ), QStringList( { "one", "two", "three", "" } ) );
	EXPECT_EQ( SplitLines( "" ), QStringList( { "" } ) );
}

TEST( ReconnectDelay, GrowsToASecondAfterLossesAndBeginsAnewWhenReset )
{
	CReconnectDelay delay;
	EXPECT_EQ( delay.AfterLoss(), 250 );
	EXPECT_EQ( delay.AfterLoss(), 500 );
	EXPECT_EQ( delay.AfterLoss(), 1000 );
	EXPECT_EQ( delay.AfterLoss(), 1000 ) << "an engine that comes back is found within two seconds";
	delay.Reset();
	EXPECT_EQ( delay.AfterLoss(), 250 );
}

TEST( ReconnectDelay, IsMuchLongerAfterRefusals )
{
	CReconnectDelay delay;
	delay.AfterLoss();
	EXPECT_EQ( delay.AfterRefusal(), 5000 );
	EXPECT_EQ( delay.AfterRefusal(), 10000 );
	EXPECT_EQ( delay.AfterRefusal(), 20000 );
	EXPECT_EQ( delay.AfterRefusal(), 30000 );
	EXPECT_EQ( delay.AfterRefusal(), 30000 );
	EXPECT_EQ( delay.AfterLoss(), 500 ) << "the two do not mix";
}

TEST( TrafficMeter, GivesRatesOverTheTimeSinceTheLastMeasure )
{
	CTrafficMeter meter;
	meter.Restart( 100.0 );
	for ( int i = 0; i < 30; i++ )
		meter.AddChunk( 200 );
	EXPECT_EQ( meter.ChunksPerSecond(), 0.0 );
	meter.Measure( 100.5 );
	EXPECT_DOUBLE_EQ( meter.ChunksPerSecond(), 60.0 );
	EXPECT_DOUBLE_EQ( meter.BytesPerSecond(), 12000.0 );
	meter.Measure( 100.5 );
	EXPECT_DOUBLE_EQ( meter.ChunksPerSecond(), 60.0 ) << "no time, no news";
	meter.Measure( 101.5 );
	EXPECT_DOUBLE_EQ( meter.ChunksPerSecond(), 0.0 );
	meter.AddChunk( 1 );
	meter.Restart( 200.0 );
	meter.Measure( 201.0 );
	EXPECT_DOUBLE_EQ( meter.BytesPerSecond(), 0.0 );
}

TEST( TrafficMeter, WritesRatesInTheUnitThatFits )
{
	EXPECT_EQ( FormatByteRate( 0.0 ), "0 B/s" );
	EXPECT_EQ( FormatByteRate( 999.0 ), "999 B/s" );
	EXPECT_EQ( FormatByteRate( 999.7 ), "1.0 kB/s" );
	EXPECT_EQ( FormatByteRate( 12345.0 ), "12.3 kB/s" );
	EXPECT_EQ( FormatByteRate( 999949.0 ), "999.9 kB/s" );
	EXPECT_EQ( FormatByteRate( 999960.0 ), "1.0 MB/s" );
	EXPECT_EQ( FormatByteRate( 5e9 ), "5.0 GB/s" );
	EXPECT_EQ( FormatByteRate( 5e13 ), "50000.0 GB/s" );
}

TEST( CommandHistory, WalksBackAndForthAndReturnsToTheDraft )
{
	CCommandHistory history;
	EXPECT_EQ( history.Older( "draft" ), "draft" ) << "nothing to show";
	history.Add( "one" );
	history.Add( "two" );
	EXPECT_EQ( history.Older( "draft" ), "two" );
	EXPECT_EQ( history.Older( "two" ), "one" );
	EXPECT_EQ( history.Older( "one" ), "one" );
	EXPECT_EQ( history.Newer( "one" ), "two" );
	EXPECT_EQ( history.Newer( "two" ), "draft" );
	EXPECT_EQ( history.Newer( "draft" ), "draft" );
}

TEST( CommandHistory, KeepsARepeatedCommandOnceAndAtMostItsLimit )
{
	CCommandHistory history;
	history.Add( "same" );
	history.Add( "same" );
	EXPECT_EQ( history.Commands().size(), 1 );
	for ( int i = 0; i < 300; i++ )
		history.Add( QString::number( i ) );
	EXPECT_EQ( history.Commands().size(), 200 );
	EXPECT_EQ( history.Commands().first(), "100" );
	EXPECT_EQ( history.Commands().last(), "299" );
}

TEST( CommandHistory, BeginsAtTheNewestAfterACommandWasSent )
{
	CCommandHistory history;
	history.Add( "one" );
	history.Add( "two" );
	history.Older( "" );
	history.Older( "" );
	history.Add( "three" );
	EXPECT_EQ( history.Older( "" ), "three" );
}

CommandLineResult Parse( const QStringList &arguments )
{
	return ParseCommandLine( QStringList( "tessel" ) + arguments );
}

TEST( CommandLine, AsksForNothingByItself )
{
	const CommandLineResult result = Parse( {} );
	ASSERT_EQ( result.m_Kind, CommandLineResult::Kind::Run );
	EXPECT_TRUE( result.m_Options.m_Connect.empty() );
	EXPECT_FALSE( result.m_Options.m_bDemo );
	EXPECT_TRUE( result.m_Options.SubToolsToOpen().isEmpty() );
	EXPECT_FALSE( result.m_Options.m_Style.has_value() );
}

TEST( CommandLine, TakesEveryOption )
{
	QTemporaryDir folder;
	const QString picture = folder.filePath( "shot.png" );
	const CommandLineResult result = Parse( { "--connect", "a:1", "--connect=b", "--open", "Show Budget", "--demo",
		"--screenshot", picture, "--after", "1.5", "--what", "console", "--size", "800x600", "--settings", "s.txt",
		"--plugin", "x.so", "--plugin", "y.so", "--style", "light" } );
	ASSERT_EQ( result.m_Kind, CommandLineResult::Kind::Run ) << result.m_Text.toStdString();
	const CommandLineOptions &options = result.m_Options;
	ASSERT_EQ( options.m_Connect.size(), 2u );
	EXPECT_EQ( options.m_Connect[0], ( TargetAddress{ "a", 1 } ) );
	EXPECT_EQ( options.m_Connect[1], ( TargetAddress{ "b", 27190 } ) );
	EXPECT_EQ( options.m_Open, QStringList( "Show Budget" ) );
	EXPECT_TRUE( options.m_bDemo );
	EXPECT_EQ( options.m_ScreenshotFile, picture );
	EXPECT_EQ( options.m_flScreenshotAfter, 1.5 );
	EXPECT_EQ( options.m_ScreenshotSubject, ScreenshotSubject::Console );
	EXPECT_EQ( options.m_ScreenshotSize, QSize( 800, 600 ) );
	EXPECT_EQ( options.m_SettingsFile, "s.txt" );
	EXPECT_EQ( options.m_Plugins, QStringList( { "x.so", "y.so" } ) );
	EXPECT_EQ( options.m_Style, StyleChoice::Light );
}

TEST( CommandLine, TakesRecordingsWithAndWithoutTheirOption )
{
	QTemporaryDir folder;
	QStringList paths;
	for ( const char *pName : { "a.kesto", "b.kesto" } )
	{
		QFile file( folder.filePath( pName ) );
		ASSERT_TRUE( file.open( QIODevice::WriteOnly ) );
		paths += file.fileName();
	}
	const CommandLineResult plain = Parse( { paths[1], paths[0] } );
	ASSERT_EQ( plain.m_Kind, CommandLineResult::Kind::Run ) << plain.m_Text.toStdString();
	EXPECT_EQ( plain.m_Options.m_Recordings, QStringList( { paths[1], paths[0] } ) );
	EXPECT_FALSE( plain.m_Options.m_Frame.has_value() );
	EXPECT_TRUE( plain.m_Options.SubToolsToOpen().isEmpty() ) << "no window for an engine that nobody asked for";

	const QStringList named = { "--open-recording", QDir::current().relativeFilePath( paths[0] ), "--frame" };
	EXPECT_EQ( Parse( named + QStringList( "12" ) ).m_Options.m_Recordings, QStringList( paths[0] ) );
	EXPECT_EQ( Parse( named + QStringList( "12" ) ).m_Options.m_Frame, 12 );
	EXPECT_EQ( Parse( named + QStringList( "slowest" ) ).m_Options.m_Frame, CommandLineOptions::SLOWEST_FRAME );
	for ( const char *pFrame : { "-1", "1.5", "last", "-0" } )
	{
		const CommandLineResult wrong = Parse( named + QStringList( pFrame ) );
		EXPECT_EQ( wrong.m_Kind, CommandLineResult::Kind::Wrong ) << pFrame;
		EXPECT_THAT( wrong.m_Text.toStdString(), HasSubstr( "--frame: \"" + std::string( pFrame ) ) );
	}

	const QString picture = folder.filePath( "a.png" );
	const CommandLineResult player = Parse( { paths[0], "--screenshot", picture, "--what", "player" } );
	ASSERT_EQ( player.m_Kind, CommandLineResult::Kind::Run ) << player.m_Text.toStdString();
	EXPECT_EQ( player.m_Options.m_ScreenshotSubject, ScreenshotSubject::Player );
	EXPECT_TRUE( player.m_Options.SubToolsToOpen().isEmpty() );
}

TEST( CommandLine, OpensShowBudgetForTheDemoAndForAPictureOfIt )
{
	QTemporaryDir folder;
	const QStringList picture = { "--connect", "a", "--screenshot", folder.filePath( "a.png" ) };
	EXPECT_EQ( Parse( { "--demo" } ).m_Options.SubToolsToOpen(), QStringList( "Show Budget" ) );
	EXPECT_EQ(
		Parse( { "--demo", "--open", "show budget" } ).m_Options.SubToolsToOpen(), QStringList( "show budget" ) );
	EXPECT_EQ( Parse( picture ).m_Options.SubToolsToOpen(), QStringList( "Show Budget" ) );
	EXPECT_TRUE( Parse( picture + QStringList{ "--what", "console" } ).m_Options.SubToolsToOpen().isEmpty() );
	const CommandLineOptions panel = Parse( picture + QStringList{ "--what", "miniprofiler" } ).m_Options;
	EXPECT_EQ( panel.SubToolsToOpen(), QStringList( "Show Budget" ) );
	EXPECT_EQ( panel.m_ScreenshotSubject, ScreenshotSubject::MiniProfiler );
}

TEST( CommandLine, PrintsHelpThatNamesEveryOptionAndTheVersion )
{
	for ( const char *pOption : { "-h", "--help" } )
	{
		const CommandLineResult help = Parse( { pOption } );
		ASSERT_EQ( help.m_Kind, CommandLineResult::Kind::Print );
		for ( const char *pName :
			{ "--connect", "--open", "--demo", "--screenshot", "--after", "--what", "--size", "--open-recording",
				"--frame", "--settings", "--plugin", "--token-file", "--style", "--help", "--version" } )
			EXPECT_THAT( help.m_Text.toStdString(), HasSubstr( pName ) );
	}
	const CommandLineResult version = Parse( { "--version" } );
	ASSERT_EQ( version.m_Kind, CommandLineResult::Kind::Print );
	EXPECT_THAT( version.m_Text.toStdString(), testing::MatchesRegex( "tessel [0-9]+\\.[0-9]+\\.[0-9]+\n" ) );
}

struct WrongLine
{
	QStringList m_Arguments;
	const char *m_pComplaint;
};

class WrongLines : public testing::TestWithParam<WrongLine>
{
};

TEST_P( WrongLines, AreToldInOneClearLine )
{
	const CommandLineResult result = Parse( GetParam().m_Arguments );
	ASSERT_EQ( result.m_Kind, CommandLineResult::Kind::Wrong );
	EXPECT_THAT( result.m_Text.toStdString(), HasSubstr( GetParam().m_pComplaint ) );
	EXPECT_TRUE( result.m_Text.startsWith( "tessel: " ) );
	EXPECT_FALSE( result.m_Text.contains( '\n' ) );
}

INSTANTIATE_TEST_SUITE_P(, WrongLines,
	testing::Values( WrongLine{ { "--nonsense" }, "nonsense" }, WrongLine{ { "word" }, "unexpected argument \"word\"" },
		WrongLine{ { "word" }, "there is no file word" },
		WrongLine{ { "--open-recording", "/no/file" }, "--open-recording: there is no file /no/file" },
		WrongLine{ { "--open-recording", "/tmp" }, "--open-recording: there is no file /tmp" },
		WrongLine{ { "--open-recording", "" }, "--open-recording is given an empty value" },
		WrongLine{ { "--frame", "3" }, "--frame needs a recording" },
		WrongLine{ { "--screenshot", "/tmp/a.png", "--what", "player" }, "of the player needs a recording" },
		WrongLine{ { "--connect" }, "connect" }, WrongLine{ { "--connect", "a:b" }, "--connect: bad address \"a:b\"" },
		WrongLine{ { "--connect", "" }, "--connect is given an empty value" },
		WrongLine{ { "--open", "" }, "--open is given an empty value" },
		WrongLine{ { "--style", "pink" }, "--style: \"pink\" is none of dark, light, system" },
		WrongLine{ { "--style", "dark", "--style", "light" }, "--style is given more than once" },
		WrongLine{ { "--settings", "/" }, "--settings: / is a folder" },
		WrongLine{ { "--settings", "" }, "--settings is given an empty value" }, WrongLine{ { "--demo=yes" }, "demo" },
		WrongLine{ { "--after", "1" }, "need --screenshot" }, WrongLine{ { "--what", "budget" }, "need --screenshot" },
		WrongLine{ { "--demo", "--screenshot", "/tmp/a.txt" }, "does not end in .png" },
		WrongLine{ { "--demo", "--screenshot", "/no/such/folder/a.png" }, "there is no folder /no/such/folder" },
		WrongLine{ { "--screenshot", "/tmp/a.png" }, "needs --connect or --demo" },
		WrongLine{ { "--demo", "--screenshot", "/tmp/a.png", "--after", "soon" }, "--after: \"soon\"" },
		WrongLine{ { "--demo", "--screenshot", "/tmp/a.png", "--after", "-1" }, "--after: \"-1\"" },
		WrongLine{ { "--demo", "--screenshot", "/tmp/a.png", "--after", "%1%2" }, "--after: \"%1%2\" is no number" },
		WrongLine{ { "--style", "a\nb\x1b" }, "--style: \"a\uFFFDb\uFFFD\" is none of" },
		WrongLine{ { "--demo", "--screenshot", "/tmp/a.png", "--after", "nan" }, "--after: \"nan\"" },
		WrongLine{ { "--size", "800x600" }, "need --screenshot" },
		WrongLine{ { "--demo", "--screenshot", "/tmp/a.png", "--size", "800" }, "--size: \"800\"" },
		WrongLine{ { "--demo", "--screenshot", "/tmp/a.png", "--size", "99x100" }, "--size: \"99x100\"" },
		WrongLine{ { "--demo", "--screenshot", "/tmp/a.png", "--size", "100x8193" }, "--size: \"100x8193\"" },
		WrongLine{ { "--demo", "--screenshot", "/tmp/a.png", "--what", "all" }, "--what: \"all\" is none of" } ) );
} // namespace
