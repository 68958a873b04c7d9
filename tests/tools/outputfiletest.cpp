#include "tools/outputfile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <sstream>

#include "tests/tools/kestorun.h"

namespace
{
// What a disk says when it is to take a file in; without one, the disk itself is asked.
std::function<int()> g_Disk;
mode_t ModeOf( const std::string &path )
{
	struct stat status;
	EXPECT_EQ( stat( path.c_str(), &status ), 0 ) << path;
	return status.st_mode & 07777;
}
} // namespace

// In front of the C library's.
extern "C" int fsync( int nFile )
{
	return g_Disk ? g_Disk() : static_cast<int>( syscall( SYS_fsync, nFile ) );
}

class OutputFile : public testing::Test
{
protected:
	CTestFolder m_Folder;
	std::ostringstream m_StandardOutput;
	COutputFile m_Output{ m_StandardOutput };
};

TEST_F( OutputFile, HasItsNameOnlyWhenItIsWhole )
{
	ASSERT_TRUE( m_Output.Open( m_Folder.Path( "x" ) ) );
	EXPECT_TRUE( m_Output.Write( "one " ) );
	EXPECT_EQ( m_Folder.Names().size(), 1u );
	EXPECT_NE( m_Folder.Names().front(), "x" );
	EXPECT_TRUE( m_Output.Write( "two" ) );
	EXPECT_TRUE( m_Output.Commit() );
	EXPECT_EQ( m_Folder.Names(), std::vector<std::string>{ "x" } );
	EXPECT_EQ( m_Folder.Read( "x" ), "one two" );
}

TEST_F( OutputFile, WhatWasThereStaysUntilThen )
{
	m_Folder.Write( "x", ToBytes( "old" ) );
	ASSERT_TRUE( m_Output.Open( m_Folder.Path( "x" ) ) );
	EXPECT_TRUE( m_Output.Write( std::string( 1 << 20, 'n' ) ) );
	EXPECT_EQ( m_Folder.Read( "x" ), "old" );
	EXPECT_TRUE( m_Output.Commit() );
	EXPECT_EQ( m_Folder.Read( "x" ), std::string( 1 << 20, 'n' ) );
}

TEST_F( OutputFile, TheDiskTakesTheNewFileBeforeTheOldOneGoes )
{
	m_Folder.Write( "x", ToBytes( "old" ) );
	int nAsked = 0;
	g_Disk = [&]
	{
		nAsked++;
		EXPECT_EQ( m_Folder.Read( "x" ), "old" );
		EXPECT_EQ( m_Folder.Names().size(), 2u );
		return 0;
	};
	ASSERT_TRUE( m_Output.Open( m_Folder.Path( "x" ) ) );
	EXPECT_TRUE( m_Output.Write( "new" ) );
	EXPECT_TRUE( m_Output.Commit() );
	g_Disk = nullptr;
	EXPECT_EQ( nAsked, 1 );
	EXPECT_EQ( m_Folder.Read( "x" ), "new" );
}

TEST_F( OutputFile, WhatWasThereStaysWhereTheDiskFails )
{
	m_Folder.Write( "x", ToBytes( "old" ) );
	ASSERT_TRUE( m_Output.Open( m_Folder.Path( "x" ) ) );
	EXPECT_TRUE( m_Output.Write( "new" ) );
	g_Disk = []
	{
		errno = EIO;
		return -1;
	};
	EXPECT_FALSE( m_Output.Commit() );
	g_Disk = nullptr;
	EXPECT_EQ( m_Output.Problem(), "kesto: " + m_Folder.Path( "x" ) + ": Input/output error" );
	EXPECT_EQ( m_Folder.Names(), std::vector<std::string>{ "x" } );
	EXPECT_EQ( m_Folder.Read( "x" ), "old" );
}

TEST_F( OutputFile, IsThereAlsoWhereTheFileSystemCannotBeAsked )
{
	g_Disk = []
	{
		errno = EINVAL;
		return -1;
	};
	ASSERT_TRUE( m_Output.Open( m_Folder.Path( "x" ) ) );
	EXPECT_TRUE( m_Output.Write( "new" ) );
	EXPECT_TRUE( m_Output.Commit() );
	g_Disk = nullptr;
	EXPECT_EQ( m_Folder.Read( "x" ), "new" );
}

TEST_F( OutputFile, LeavesNothingBehindWithoutACommit )
{
	m_Folder.Write( "x", ToBytes( "old" ) );
	{
		COutputFile output( m_StandardOutput );
		ASSERT_TRUE( output.Open( m_Folder.Path( "x" ) ) );
		EXPECT_TRUE( output.Write( std::string( 1 << 20, 'n' ) ) );
		EXPECT_EQ( m_Folder.Names().size(), 2u );
	}
	EXPECT_EQ( m_Folder.Names(), std::vector<std::string>{ "x" } );
	EXPECT_EQ( m_Folder.Read( "x" ), "old" );
}

TEST_F( OutputFile, KeepsThePermissionsOfWhatWasThere )
{
	m_Folder.Write( "x", {} );
	ASSERT_EQ( chmod( m_Folder.Path( "x" ).c_str(), 0640 ), 0 );
	EXPECT_TRUE( m_Output.Open( m_Folder.Path( "x" ) ) && m_Output.Commit() );
	EXPECT_EQ( ModeOf( m_Folder.Path( "x" ) ), 0640u );
}

TEST_F( OutputFile, ANewFileHasThePermissionsOfAnyOther )
{
	const mode_t nOld = umask( 027 );
	EXPECT_TRUE( m_Output.Open( m_Folder.Path( "x" ) ) && m_Output.Commit() );
	umask( nOld );
	EXPECT_EQ( ModeOf( m_Folder.Path( "x" ) ), 0640u );
}

TEST_F( OutputFile, ALinkStaysALink )
{
	m_Folder.Write( "real", ToBytes( "old" ) );
	ASSERT_EQ( symlink( "real", m_Folder.Path( "link" ).c_str() ), 0 );
	EXPECT_TRUE( m_Output.Open( m_Folder.Path( "link" ) ) && m_Output.Write( "new" ) && m_Output.Commit() );
	EXPECT_EQ( m_Folder.Read( "real" ), "new" );
	EXPECT_TRUE( std::filesystem::is_symlink( m_Folder.Path( "link" ) ) );
	EXPECT_EQ( m_Folder.Names(), ( std::vector<std::string>{ "link", "real" } ) );
}

TEST_F( OutputFile, ALinkToNothingLeadsToTheNewFile )
{
	std::filesystem::create_directory( m_Folder.Path( "a" ) );
	ASSERT_EQ( symlink( "a/second", m_Folder.Path( "link" ).c_str() ), 0 );
	ASSERT_EQ( symlink( "../real", m_Folder.Path( "a/second" ).c_str() ), 0 );
	EXPECT_TRUE( m_Output.Open( m_Folder.Path( "link" ) ) && m_Output.Write( "new" ) && m_Output.Commit() );
	EXPECT_TRUE( std::filesystem::is_symlink( m_Folder.Path( "link" ) ) );
	EXPECT_TRUE( std::filesystem::is_symlink( m_Folder.Path( "a/second" ) ) );
	EXPECT_TRUE( std::filesystem::is_regular_file( std::filesystem::symlink_status( m_Folder.Path( "real" ) ) ) );
	EXPECT_EQ( m_Folder.Read( "real" ), "new" );
	EXPECT_EQ( m_Folder.Names(), ( std::vector<std::string>{ "a", "link", "real" } ) );
}

TEST_F( OutputFile, ALinkIntoNoFolderSaysWhereItLeads )
{
	ASSERT_EQ( symlink( "/nowhere/x", m_Folder.Path( "link" ).c_str() ), 0 );
	EXPECT_FALSE( m_Output.Open( m_Folder.Path( "link" ) ) );
	EXPECT_EQ( m_Output.Problem(),
		"kesto: " + m_Folder.Path( "link" ) + ": No such file or directory (a link to \"/nowhere/x\")" );
	EXPECT_EQ( m_Folder.Names(), std::vector<std::string>{ "link" } );
}

TEST_F( OutputFile, RefusesLinksThatGoRoundInCircles )
{
	ASSERT_EQ( symlink( "b", m_Folder.Path( "a" ).c_str() ), 0 );
	ASSERT_EQ( symlink( "a", m_Folder.Path( "b" ).c_str() ), 0 );
	EXPECT_FALSE( m_Output.Open( m_Folder.Path( "a" ) ) );
	EXPECT_EQ( m_Output.Problem(), "kesto: " + m_Folder.Path( "a" ) + ": Too many levels of symbolic links" );
	EXPECT_TRUE( std::filesystem::is_symlink( m_Folder.Path( "a" ) ) );
}

TEST_F( OutputFile, RefusesANameThatIsNone )
{
	EXPECT_FALSE( m_Output.Open( "" ) );
	EXPECT_EQ( m_Output.Problem(), "kesto: the output has no name" );
}

// Nobody can make a file there, whoever runs the tests.
TEST_F( OutputFile, TellsThatTheFolderCannotBeWritten )
{
	EXPECT_FALSE( m_Output.Open( "/sys/kesto" ) );
	EXPECT_TRUE( m_Output.Problem().starts_with( "kesto: /sys/kesto: " ) ) << m_Output.Problem();
	EXPECT_FALSE( m_Output.Write( "text" ) );
	EXPECT_FALSE( m_Output.Commit() );
}

TEST_F( OutputFile, ADeviceIsWrittenToAndNotReplaced )
{
	EXPECT_TRUE( m_Output.Open( "/dev/null" ) && m_Output.Write( "gone" ) && m_Output.Commit() );
	EXPECT_TRUE( std::filesystem::is_character_file( "/dev/null" ) );
}

TEST_F( OutputFile, TellsThatADeviceIsFull )
{
	ASSERT_TRUE( m_Output.Open( "/dev/full" ) );
	EXPECT_FALSE( m_Output.Write( std::string( 1 << 20, 'n' ) ) );
	EXPECT_EQ( m_Output.Problem(), "kesto: /dev/full: No space left on device" );
	EXPECT_FALSE( m_Output.Write( "more" ) );
	EXPECT_FALSE( m_Output.Commit() );
	EXPECT_TRUE( std::filesystem::is_character_file( "/dev/full" ) );
}

TEST_F( OutputFile, TellsThatTheFolderIsNotThere )
{
	EXPECT_FALSE( m_Output.Open( m_Folder.Path( "nowhere/x" ) ) );
	EXPECT_EQ( m_Output.Problem(), "kesto: " + m_Folder.Path( "nowhere/x" ) + ": No such file or directory" );
}

TEST_F( OutputFile, RefusesAFolder )
{
	std::filesystem::create_directory( m_Folder.Path( "x" ) );
	EXPECT_FALSE( m_Output.Open( m_Folder.Path( "x" ) ) );
	EXPECT_EQ( m_Output.Problem(), "kesto: " + m_Folder.Path( "x" ) + ": is a directory" );
}

TEST_F( OutputFile, AMinusIsStandardOutput )
{
	EXPECT_TRUE( m_Output.Open( "-" ) && m_Output.Write( "text" ) && m_Output.Commit() );
	EXPECT_EQ( m_StandardOutput.str(), "text" );
}

TEST_F( OutputFile, TellsThatStandardOutputFails )
{
	m_StandardOutput.setstate( std::ios::badbit );
	EXPECT_TRUE( m_Output.Open( "-" ) );
	EXPECT_FALSE( m_Output.Write( "text" ) );
	EXPECT_EQ( m_Output.Problem(), "kesto: standard output: cannot be written" );
}
