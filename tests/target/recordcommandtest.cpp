// Recordings that consoles start and stop.
#include <gmock/gmock.h>

#include <filesystem>

#include "recordersession.h"

namespace
{
using showbudget::EndFrame;
using showbudget::GetRecordingState;
using testing::HasSubstr;
using testing::Pair;

class RecordCommand : public Recorder
{
protected:
	showbudget::Settings MakeSettings() override
	{
		showbudget::Settings settings = Recorder::MakeSettings();
		settings.m_bCommands = true;
		return settings;
	}
	static const std::string &Folder()
	{
		static const CTemporaryFolder s_Folder; // the first one that is registered counts
		static const bool s_bRegistered = showbudget::RegisterRecordCommand( s_Folder.Path().c_str() );
		EXPECT_TRUE( s_bRegistered );
		return s_Folder.Path();
	}
	void SetUp() override
	{
		Recorder::SetUp();
		Folder();
		m_pConsole = std::make_unique<CTestConsole>( showbudget::Port() );
		m_pConsole->Greet();
	}
	// The answer of the library, once it got the command.
	std::string Answer( const std::string &command )
	{
		m_pConsole->Command( command );
		WaitUntil(
			[this]
			{
				EndFrame();
				return m_pConsole->HasBytes();
			} );
		return m_pConsole->ReceiveLine();
	}

	std::unique_ptr<CTestConsole> m_pConsole;
};

TEST_F( RecordCommand, StartsAndStopsARecordingInItsFolder )
{
	const std::string path = Folder() + "/one.kesto";
	EXPECT_EQ( Answer( "record start one" ), "recording to \"" + path + "\"\n" );
	RunFrame( 1 );
	RunFrame( 2 );
	EXPECT_THAT( Answer( "record" ), HasSubstr( "Recording: " ) );
	EXPECT_THAT( Answer( "record start two" ), HasSubstr( "already recording to \"" + path + '"' ) );
	EXPECT_THAT( Answer( "record stop" ), HasSubstr( "the recording \"" + path + "\" ended: " ) );
	const std::map<std::string, uint64_t> calls = CRecordingFileOfTest( ReadBytes( path ) ).Calls();
	EXPECT_THAT( calls, testing::Contains( Pair( "Frame/Number", testing::Ge( 2u ) ) ) );
	EXPECT_THAT( Answer( "record" ), HasSubstr( "Not recording; the last recording: " ) );
	EXPECT_THAT( Answer( "record start one.kesto" ), HasSubstr( path + "\": File exists" ) );
}

TEST_F( RecordCommand, MakesUpANameAndTakesOptions )
{
	EXPECT_THAT( Answer( "record start frames=3 threads=all slower=0 around=0 megabytes=1" ),
		HasSubstr( "recording to \"" + Folder() + "/recording-" ) );
	ASSERT_TRUE( WaitUntil(
		[]
		{
			RunFrame( 1 );
			return !GetRecordingState().m_bRunning;
		} ) );
	EXPECT_THAT( m_pConsole->ReceiveLine(), HasSubstr( "ended at its limit of 3 frames: 3 frames" ) );
}

TEST_F( RecordCommand, MakesUpANameForEachRecording )
{
	EXPECT_THAT( Answer( "record start" ), HasSubstr( "recording to \"" ) );
	EXPECT_THAT( Answer( "record stop" ), HasSubstr( "ended: " ) );
	EXPECT_THAT( Answer( "record start" ), HasSubstr( "recording to \"" ) );
	EXPECT_THAT( Answer( "record stop" ), HasSubstr( "ended: " ) );
}

TEST_F( RecordCommand, SaysWhatIsWrongWithACommand )
{
	for ( const auto &[command, answer] :
		std::map<std::string, std::string>{
			{ "record start ../outside", "record: \"../outside\" is no plain file name." },
			{ "record start /tmp/outside", "record: \"/tmp/outside\" is no plain file name." },
			{ "record start .hidden", "record: \".hidden\" is no plain file name." },
			{ "record start x frames=many", "record: \"frames=many\" is not understood: expected a number of frames." },
			{ "record start x megabytes=-1",
				"record: \"megabytes=-1\" is not understood: expected a size in megabytes." },
			{ "record start slower=nan", "record: \"slower=nan\" is not understood: expected milliseconds." },
			{ "record start around=1001",
				"record: \"around=1001\" is not understood: expected a number from 0 to 1000." },
			{ "record start threads=some",
				"record: \"threads=some\" is not understood: expected \"frame\" or \"all\"." },
			{ "record start x y", "record: \"y\" is not understood: expected one of" },
			{ "record stop", "record: nothing is being recorded." },
			{ "record play", "record takes \"start\" with a file name and options, or \"stop\"." } } )
		EXPECT_THAT( Answer( command ), HasSubstr( answer ) );
	EXPECT_FALSE( GetRecordingState().m_bRunning );
	EXPECT_FALSE( std::filesystem::exists( Folder() + "/x.kesto" ) );
}
} // namespace
