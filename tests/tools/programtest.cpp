// The built program as a process: statuses, help, streams, signals, manual pages and completion.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <signal.h>

#include <set>
#include <sstream>

#include "tests/tools/fakeengine.h"
#include "tests/tools/kestorun.h"
#include "tests/tools/samplerecordings.h"

namespace
{
std::string AsText( const std::vector<uint8_t> &bytes )
{
	return { bytes.begin(), bytes.end() };
}

// The first words of the lines between "Subcommands:" and the next empty line of the help.
std::vector<std::string> CommandNames()
{
	std::vector<std::string> names;
	bool bInside = false;
	for ( const std::string &line : SplitLines( RunKestoProgram( { "--help" } ).m_Output ) )
	{
		if ( bInside && !line.empty() )
		{
			std::istringstream words( line );
			names.emplace_back();
			words >> names.back();
		}
		bInside = line == "Subcommands:" || ( bInside && !line.empty() );
	}
	return names;
}

// Everything in a help text that looks like "--word".
std::set<std::string> LongOptions( const std::string &help )
{
	std::set<std::string> options;
	for ( size_t nAt = help.find( "--" ); nAt != std::string::npos; nAt = help.find( "--", nAt + 2 ) )
	{
		const size_t nEnd = help.find_first_not_of( "abcdefghijklmnopqrstuvwxyz-", nAt );
		if ( nEnd > nAt + 2 )
			options.insert( help.substr( nAt, nEnd - nAt ) );
	}
	return options;
}

// What the completion offers for the last of the words.
std::set<std::string> Complete( const std::vector<std::string> &words )
{
	std::string script = "source '" KESTO_COMPLETION "'; COMP_WORDS=(";
	for ( const std::string &word : words )
		script += " '" + word + "'";
	script += " ); COMP_CWORD=" + std::to_string( words.size() - 1 ) +
			  "; _kesto kesto \"${COMP_WORDS[COMP_CWORD]}\" \"${COMP_WORDS[COMP_CWORD-1]}\"; "
			  "printf '%s\\n' \"${COMPREPLY[@]}\"";
	const KestoRun run = RunProgram( { "bash", "--norc", "-c", script } );
	EXPECT_EQ( run.m_nStatus, 0 );
	EXPECT_EQ( run.m_Errors, "" );
	std::set<std::string> offered;
	for ( const std::string &line : SplitLines( run.m_Output ) )
		if ( !line.empty() )
			offered.insert( line );
	return offered;
}

const char *const MANUAL = KESTO_MANUALS "/kesto.1";
const char *const MANUAL_OF_CONVERT = KESTO_MANUALS "/kesto-convert.1";

std::string TextOfManual( const char *pPath )
{
	std::string page; // bold letters are written twice, with a backspace between them
	for ( const char c : RunProgram( { "mandoc", "-Tascii", pPath } ).m_Output )
	{
		if ( c == '\b' )
			page.pop_back();
		else
			page += c;
	}
	return page;
}

// What the manual page says of a command: from its line in the list of commands up to the next one's.
std::string ManualOf( const std::string &command )
{
	const std::string page = TextOfManual( MANUAL );
	const size_t nList = page.find( "\nCOMMANDS\n" );
	const size_t nBegin = page.find( "\n     kesto " + command + " ", nList );
	const size_t nEnd = std::min( page.find( "\n     kesto ", nBegin + 1 ), page.find( "\nEXIT STATUS\n" ) );
	return nBegin == std::string::npos ? "" : page.substr( nBegin, nEnd - nBegin );
}
} // namespace

TEST( KestoProgram, EveryCommandHasAHelpWithAnExample )
{
	const std::vector<std::string> names = CommandNames();
	ASSERT_GE( names.size(), 8u );
	for ( const std::string &name : names )
	{
		const KestoRun run = RunKestoProgram( { name, "--help" } );
		EXPECT_EQ( run.m_nStatus, 0 ) << name;
		EXPECT_EQ( run.m_Errors, "" ) << name;
		EXPECT_NE( run.m_Output.find( "\nExample:\n  kesto " + name + " " ), std::string::npos ) << run.m_Output;
	}
}

TEST( KestoProgram, WrongUsageIsOneLineAndStatusTwo )
{
	const std::vector<std::vector<std::string>> wrong{ {}, { "nonsense" }, { "--nonsense" }, { "dump" },
		{ "dump", "a", "b" }, { "info", "a", "--top" }, { "info", "a", "--top", "x" }, { "info", "a", "--by", "age" },
		{ "frames" }, { "nodes" }, { "compare", "a" }, { "check" }, { "check", "a", "--budget" }, { "repair", "a" },
		{ "info", "a", "--top", "-1" }, { "info", "a", "--top", "010" }, { "info", "a", "--top", "0x10" },
		{ "info", "a", "--top", "99999999999999999999" }, { "check", "a", "--frame", "<=1", "--percentile", "nan" },
		{ "check", "a", "--frame", "<=1", "--percentile", "100.1" },
		{ "check", "a", "--frame", "<=1", "--percentile", "-1" }, { "convert", "a", "b.json", "--period", "nan" },
		{ "convert", "a", "b.json", "--period", "0" }, { "convert", "a", "b.json", "--sample-time", "inf" },
		{ "record", "--connect", "h", "--frames", "0", "x.csv" },
		{ "record", "--connect", "h", "--frames", "1e3", "x.csv" }, { "record", "--seconds", "1", "x.csv" },
		{ "record", "--connect", "h", "--seconds", "1" } };
	for ( const std::vector<std::string> &arguments : wrong )
	{
		const KestoRun run = RunKestoProgram( arguments );
		const std::string shown = testing::PrintToString( arguments );
		EXPECT_EQ( run.m_nStatus, 2 ) << shown;
		EXPECT_EQ( run.m_Output, "" ) << shown;
		EXPECT_TRUE( run.m_Errors.starts_with( "kesto: " ) ) << shown << run.m_Errors;
		EXPECT_EQ( SplitLines( run.m_Errors ).size(), 1u ) << shown << run.m_Errors;
	}
	EXPECT_EQ(
		RunKestoProgram( { "nonsense" } ).m_Errors, "kesto: there is no command \"nonsense\" (see kesto --help)\n" );
}

TEST( KestoProgram, AnOptionWithAFewWordsNamesThemInItsHelpAndWhenAnotherIsGiven )
{
	EXPECT_THAT( RunKestoProgram( { "info", "--help" } ).m_Output, testing::HasSubstr( "\n  --by total|self  " ) );
	for ( const std::string word : { "age", "1", "Self", "" } )
		EXPECT_EQ( RunKestoProgram( { "info", "a", "--by", word } ).m_Errors,
			"kesto: --by: \"" + word + "\" is neither total nor self (see kesto info --help)\n" );
	EXPECT_THAT( RunKestoProgram( { "convert", "--help" } ).m_Output,
		testing::HasSubstr( "\n  --to FORMAT:kesto, chrome, speedscope, folded, csv\n" ) );
}

TEST( KestoProgram, EveryReadingCommandTellsWholeFromDamagedFromUnusable )
{
	const CTestFolder folder;
	const std::string whole = folder.Write( "whole.kesto", MakeFourFrames() );
	const std::string damaged = folder.Write( "damaged.kesto", MakeDamaged() );
	const std::string text = folder.Write( "text.kesto", ToBytes( "no recording" ) );
	const std::string empty = folder.Write( "empty.kesto", {} );
	const auto status = []( const std::string &command, const std::string &path )
	{
		std::vector<std::string> arguments{ command, path };
		if ( command == "check" )
			arguments.insert( arguments.end(), { "--frame", "<=100" } );
		if ( command == "compare" )
			arguments.push_back( path );
		if ( command == "repair" )
			arguments.push_back( "-" );
		return RunKestoProgram( arguments ).m_nStatus;
	};
	for ( const std::string command : { "info", "dump", "frames", "nodes", "compare", "check", "repair" } )
	{
		EXPECT_EQ( status( command, whole ), 0 ) << command;
		EXPECT_EQ( status( command, damaged ), 1 ) << command;
		EXPECT_EQ( status( command, text ), 2 ) << command;
		EXPECT_EQ( status( command, empty ), 2 ) << command;
		EXPECT_EQ( status( command, folder.Path( "missing.kesto" ) ), 2 ) << command;
		EXPECT_EQ( status( command, folder.Path( "." ) ), 2 ) << command;
	}
	EXPECT_EQ( folder.Names().size(), 4u );
}

TEST( KestoProgram, ProblemsAreOneLineWithTheFile )
{
	EXPECT_EQ( RunKestoProgram( { "info", "/nowhere/x.kesto" } ).m_Errors,
		"kesto: /nowhere/x.kesto: No such file or directory\n" );
	EXPECT_EQ( RunKestoProgram( { "info", "/" } ).m_Errors, "kesto: /: Is a directory\n" );
}

TEST( KestoProgram, ReadsStandardInput )
{
	const KestoRun run = RunKestoProgram( { "frames", "-" }, AsText( MakeFourFrames() ) );
	EXPECT_EQ( run.m_nStatus, 0 );
	EXPECT_EQ( SplitLines( run.m_Output ).size(), 5u );
	EXPECT_EQ( RunKestoProgram( { "repair", "-", "-" }, AsText( MakeDamaged() ) ).m_Output,
		AsText( MakeSample( { { 1000, 500, 400, 300 }, { 2000, 500, 900, 700 } } ) ) );
}

TEST( KestoProgram, TellsThatItsOutputCannotBeWritten )
{
	const CTestFolder folder;
	const std::string path = folder.Write( "x.kesto", MakeFourFrames() );
	for ( const std::string command : { "info", "dump", "frames", "nodes" } )
	{
		const KestoRun run =
			RunProgram( { "bash", "-c", "\"$0\" \"$1\" \"$2\" > /dev/full", KESTO_PROGRAM, command, path } );
		EXPECT_EQ( run.m_nStatus, 2 ) << command;
		EXPECT_EQ( run.m_Errors, "kesto: standard output: cannot be written\n" ) << command;
	}
}

// The shell's limit is in KiB and stands for a disk without room.
TEST( KestoProgram, LeavesTheOldFileAndNoOtherWhereThereIsNoRoomForANewOne )
{
	const CTestFolder folder;
	std::vector<SampleFrame> frames( 2000, SampleFrame{ 1000, 500, 400, 300 } );
	const std::string path = folder.Write( "in.kesto", MakeSample( frames ) );
	const std::string output = folder.Write( "out", ToBytes( "old" ) );
	for ( const std::string arguments : { "dump \"$1\" -o \"$2\"", "frames \"$1\" -o \"$2\"", "repair \"$1\" \"$2\"",
			  "convert \"$1\" \"$2\" --to chrome" } )
	{
		const KestoRun run =
			RunProgram( { "bash", "-c", "ulimit -f 8; exec \"$0\" " + arguments, KESTO_PROGRAM, path, output } );
		EXPECT_EQ( run.m_nStatus, 2 ) << arguments;
		EXPECT_EQ( run.m_Errors, "kesto: " + output + ": File too large\n" ) << arguments;
		EXPECT_EQ( folder.Read( "out" ), "old" ) << arguments;
		EXPECT_EQ( folder.Names(), ( std::vector<std::string>{ "in.kesto", "out" } ) ) << arguments;
	}
}

TEST( KestoProgram, AnswersWithItsVersion )
{
	const KestoRun run = RunKestoProgram( { "--version" } );
	EXPECT_EQ( run.m_nStatus, 0 );
	EXPECT_EQ( run.m_Output, "kesto " SHOWBUDGET_VERSION "\n" );
}

// `record` has its output open while it waits for the engine; its greeting says which process it is.
TEST( KestoProgram, ASignalLeavesNoUnfinishedFileBehind )
{
	const CTestFolder folder;
	std::vector<std::string> during;
	CFakeEngine engine(
		[&]( CFakeEngine &self )
		{
			EXPECT_EQ( self.Receive(), "HELO" );
			during = folder.Names();
			const std::vector<uint8_t> &hello = self.m_Received;
			ASSERT_GE( hello.size(), 16u );
			kill( hello[4] << 24 | hello[5] << 16 | hello[6] << 8 | hello[7], SIGHUP );
			self.WaitForHangUp();
		} );
	const KestoRun run =
		RunKestoProgram( { "record", "--connect", engine.Address(), "--seconds", "600", folder.Path( "x.csv" ) } );
	EXPECT_EQ( during.size(), 1u );
	EXPECT_EQ( run.m_nStatus, 128 + SIGHUP );
	EXPECT_EQ( folder.Names(), std::vector<std::string>{} );
}

TEST( KestoProgram, ShowsNoProgressWhereThereIsNoTerminal )
{
	const KestoRun run = RunKestoProgram( { "info", "-" }, AsText( MakeFourFrames() ) );
	EXPECT_EQ( run.m_Errors, "" );
}

TEST( KestoManual, IsWithoutFault )
{
	const KestoRun run = RunProgram( { "mandoc", "-Tlint", "-Wwarning", MANUAL, MANUAL_OF_CONVERT } );
	EXPECT_EQ( run.m_Output + run.m_Errors, "" );
	EXPECT_EQ( run.m_nStatus, 0 );
}

TEST( KestoManual, ConversionHasAPageOfItsOwn )
{
	const std::string page = TextOfManual( MANUAL_OF_CONVERT );
	std::set<std::string> options = LongOptions( RunKestoProgram( { "convert", "--help" } ).m_Output );
	options.erase( "--help" );
	ASSERT_EQ( options.size(), 7u );
	for ( const std::string &option : options )
		EXPECT_NE( page.find( "\n     " + option + " " ), std::string::npos ) << option;
	for ( const char *pFormat : { "kesto", "chrome", "speedscope", "folded", "perf", "csv" } )
		EXPECT_NE( page.find( std::string( "\n           " ) + pFormat + " " ), std::string::npos ) << pFormat;
}

TEST( KestoManual, TellsOfEveryCommandAndOption )
{
	for ( const std::string &name : CommandNames() )
	{
		const std::string text = ManualOf( name );
		EXPECT_NE( text, "" ) << name;
		std::set<std::string> options = LongOptions( RunKestoProgram( { name, "--help" } ).m_Output );
		options.erase( "--help" ); // of all commands
		for ( const std::string &option : options )
			EXPECT_NE( text.find( option ), std::string::npos ) << name << " " << option;
	}
}

TEST( KestoCompletion, IsRightBash )
{
	const KestoRun run = RunProgram( { "bash", "-n", KESTO_COMPLETION } );
	EXPECT_EQ( run.m_nStatus, 0 );
	EXPECT_EQ( run.m_Errors, "" );
}

TEST( KestoCompletion, OffersTheCommands )
{
	const std::vector<std::string> names = CommandNames();
	std::set<std::string> expected( names.begin(), names.end() );
	expected.insert( { "--help", "--version" } );
	EXPECT_EQ( Complete( { "kesto", "" } ), expected );
	EXPECT_EQ( Complete( { "kesto", "re" } ), ( std::set<std::string>{ "record", "repair" } ) );
}

TEST( KestoCompletion, OffersTheOptionsOfEachCommand )
{
	for ( const std::string &name : CommandNames() )
		EXPECT_EQ( Complete( { "kesto", name, "--" } ), LongOptions( RunKestoProgram( { name, "--help" } ).m_Output ) )
			<< name;
}

TEST( KestoCompletion, OffersRecordingsAndFolders )
{
	const CTestFolder folder;
	folder.Write( "a.kesto", {} );
	folder.Write( "a.txt", {} );
	std::filesystem::create_directory( folder.Path( "aa" ) );
	EXPECT_EQ( Complete( { "kesto", "info", folder.Path( "a" ) } ),
		( std::set<std::string>{ folder.Path( "a.kesto" ), folder.Path( "aa" ) } ) );
}

TEST( KestoCompletion, OffersTheValuesOfAnOption )
{
	EXPECT_EQ( Complete( { "kesto", "info", "x.kesto", "--by", "" } ), ( std::set<std::string>{ "self", "total" } ) );
	EXPECT_EQ( Complete( { "kesto", "check", "x.kesto", "--percentile", "" } ), std::set<std::string>{} );
}
