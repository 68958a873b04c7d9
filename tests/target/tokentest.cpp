// Consoles that must know a word to be let in.
#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "session.h"
#include "target/src/token.h"
#include "wire/sessionchunks.h"

namespace
{
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char *WORD = "open sesame";

wire::Hello AnswerTo( CTestConsole &console, std::string_view token )
{
	const std::optional<wire::Hello> hello = wire::ReadHello( console.Greet( token ).m_Payload );
	EXPECT_TRUE( hello.has_value() );
	return hello.value_or( wire::Hello() );
}

class Token : public CSession
{
	showbudget::Settings MakeSettings() override
	{
		showbudget::Settings settings = CSession::MakeSettings();
		settings.m_pToken = WORD;
		return settings;
	}
};

TEST_F( Token, WhoKnowsItIsLetInAndIsSentIt )
{
	CTestConsole console( showbudget::Port() );
	const wire::Hello hello = AnswerTo( console, WORD );
	EXPECT_EQ( hello.m_Token, WORD );
	EXPECT_EQ( hello.m_Refusal, "" );
	showbudget::Print( showbudget::Severity::Message, "welcome" );
	EXPECT_EQ( console.ReceiveLine(), "welcome\n" );
}

TEST_F( Token, WhoHasNoneIsRefusedAndNotSentIt )
{
	CTestConsole console( showbudget::Port() );
	const wire::Hello hello = AnswerTo( console, "" );
	EXPECT_EQ( hello.m_Refusal, "token required" );
	EXPECT_EQ( hello.m_Token, "" );
	EXPECT_FALSE( console.Receive().has_value() );
	EXPECT_TRUE( WaitForLog( "left: refused: token required" ) );
}

TEST_F( Token, WhoHasAnotherOneIsRefusedAndNotSentIt )
{
	for ( const std::string &token : std::vector<std::string>{
			  "open sesam", "open sesame!", "Open sesame", "x", std::string( 255, 'x' ), std::string( WORD ) + ' ' } )
	{
		CTestConsole console( showbudget::Port() );
		const wire::Hello hello = AnswerTo( console, token );
		EXPECT_EQ( hello.m_Refusal, "wrong token" ) << token;
		EXPECT_EQ( hello.m_Token, "" );
		EXPECT_FALSE( console.Receive().has_value() );
	}
	EXPECT_TRUE( WaitForLog( "left: refused: wrong token" ) );
	EXPECT_THAT( LogLines(), Each( Not( HasSubstr( "sesam" ) ) ) );
}

TEST_F( Token, ARefusedConsoleCannotAskForAnything )
{
	CTestConsole console( showbudget::Port() );
	console.Greet( "wrong" );
	console.WantBudgets( true );
	console.WantScopes( true );
	console.Command( "help" );
	EXPECT_FALSE( console.Receive().has_value() );
	EXPECT_EQ( showbudget::detail::g_nWanted.load(), 0u );
}

TEST_F( Token, AnotherProtocolVersionIsNotSentIt )
{
	CTestConsole console( showbudget::Port() );
	console.Send( wire::CHUNK_HELLO, wire::WriteHello( { 3, 0, 0, "from the future", WORD } ) );
	const std::optional<wire::Hello> hello = wire::ReadHello( console.ReceiveType( wire::CHUNK_HELLO ).m_Payload );
	ASSERT_TRUE( hello.has_value() );
	EXPECT_EQ( hello->m_Token, "" );
	EXPECT_THAT( hello->m_Refusal, HasSubstr( "version" ) );
}

class NoToken : public CSession
{
};

TEST_F( NoToken, WhateverAConsoleSendsIsIgnored )
{
	CTestConsole console( showbudget::Port() );
	const wire::Hello hello = AnswerTo( console, "some word" );
	EXPECT_EQ( hello.m_Token, "" );
	EXPECT_EQ( hello.m_Refusal, "" );
}

TEST( SameToken, IsTheSameInEveryByteAndInLength )
{
	const std::string longest( 255, 'x' );
	EXPECT_TRUE( showbudget::IsSameToken( "a", "a" ) );
	EXPECT_TRUE( showbudget::IsSameToken( longest, longest ) );
	EXPECT_FALSE( showbudget::IsSameToken( longest, longest + 'x' ) );
	EXPECT_FALSE( showbudget::IsSameToken( "a", "" ) );
	EXPECT_FALSE( showbudget::IsSameToken( "a", std::string( "a\0", 2 ) ) ) << "a NUL is a byte like any other";
	for ( size_t i = 0; i < longest.size(); i++ )
	{
		std::string other = longest;
		other[i] = 'y';
		EXPECT_FALSE( showbudget::IsSameToken( longest, other ) ) << i;
	}
}

// Where the token comes from, and what happens when it cannot come.
class TokenSource : public testing::Test
{
protected:
	void SetUp() override
	{
		ClearEnvironment();
		m_Path = testing::TempDir() + "token." + std::to_string( getpid() );
	}
	void TearDown() override
	{
		ClearEnvironment();
		unlink( m_Path.c_str() );
		rmdir( m_Path.c_str() );
	}
	static void ClearEnvironment()
	{
		unsetenv( "SHOWBUDGET_TOKEN" );
		unsetenv( "SHOWBUDGET_TOKEN_FILE" );
	}
	void WriteFile( const std::string &bytes )
	{
		std::ofstream( m_Path, std::ios::binary ) << bytes;
		setenv( "SHOWBUDGET_TOKEN_FILE", m_Path.c_str(), 1 );
	}
	// The token, or the error in brackets.
	static std::string Find( const char *pSetting = nullptr )
	{
		std::string token, error;
		return showbudget::FindToken( pSetting, token, error ) ? token : '[' + error + ']';
	}

	std::string m_Path;
};

TEST_F( TokenSource, IsNoneByDefault )
{
	EXPECT_EQ( Find(), "" );
	EXPECT_EQ( Find( "" ), "" );
}

TEST_F( TokenSource, IsTheSettingBeforeTheVariableBeforeTheFile )
{
	WriteFile( "of the file\n" );
	EXPECT_EQ( Find(), "of the file" );
	setenv( "SHOWBUDGET_TOKEN", "", 1 );
	EXPECT_EQ( Find(), "of the file" ) << "an empty variable says nothing";
	setenv( "SHOWBUDGET_TOKEN", "of the variable", 1 );
	EXPECT_EQ( Find(), "of the variable" );
	EXPECT_EQ( Find( "" ), "of the variable" ) << "an empty setting says nothing";
	EXPECT_EQ( Find( "of the setting" ), "of the setting" );
}

TEST_F( TokenSource, IsTheFirstLineOfTheFile )
{
	for ( const char *pText : { "word", "word\n", "word\r\n", "word\nsecond line\n", "word\r\n\r\n" } )
	{
		WriteFile( pText );
		EXPECT_EQ( Find(), "word" ) << pText;
	}
	const std::string longest( 255, 'x' );
	WriteFile( longest + "\r\n" );
	EXPECT_EQ( Find(), longest );
	WriteFile( longest + "\nand a second line that is long, too" );
	EXPECT_EQ( Find(), longest );
}

TEST_F( TokenSource, SaysWhatATokenIsWhenItIsNone )
{
	const std::string rule = ": a token is one line of 1 to 255 bytes without control characters]";
	for ( const std::string &text : std::vector<std::string>{
			  "", "\nword", std::string( 256, 'x' ), std::string( 10000, 'x' ), "tab\t", std::string( "a\0b", 3 ) } )
	{
		WriteFile( text );
		EXPECT_EQ( Find(), "[\"" + m_Path + '"' + rule );
	}
	setenv( "SHOWBUDGET_TOKEN", "two\nlines", 1 );
	EXPECT_EQ( Find(), "[SHOWBUDGET_TOKEN" + rule );
	EXPECT_EQ( Find( std::string( 256, 'x' ).c_str() ), "[Settings::m_pToken" + rule );
}

TEST_F( TokenSource, ThatCannotBeReadKeepsThePortShut )
{
	setenv( "SHOWBUDGET_TOKEN_FILE", m_Path.c_str(), 1 );
	std::vector<std::string> lines;
	showbudget::Settings settings;
	settings.m_nPort = 0;
	settings.m_pLog = []( showbudget::Severity, const char *pLine, void *pLines )
	{ static_cast<std::vector<std::string> *>( pLines )->push_back( pLine ); };
	settings.m_pLogContext = &lines;
	EXPECT_FALSE( showbudget::Start( settings ) );
	EXPECT_EQ( showbudget::Port(), 0 );
	ASSERT_EQ( mkdir( m_Path.c_str(), 0700 ), 0 );
	EXPECT_FALSE( showbudget::Start( settings ) );
	const std::string begin = "SHOWBUDGET_TOKEN_FILE: cannot read \"" + m_Path + "\": ";
	const std::string end = "; the port is not opened, the engine runs on without it";
	EXPECT_THAT( lines, ElementsAre( begin + "No such file or directory" + end, begin + "Is a directory" + end ) );
	showbudget::EndFrame();
}
} // namespace
