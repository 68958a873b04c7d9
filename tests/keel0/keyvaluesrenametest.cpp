// File systems that cannot rename without replacing in one step.
#include <gmock/gmock.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <sys/syscall.h>
#include <unistd.h>

#include "keel0/keyvalues.h"
#include "support/logguard.h"

namespace
{
int g_nRenameError = 0; // of the next calls; 0 lets the system do it
int g_nRenames = 0;
} // namespace

// Stands before the C library's in this program, for keel0, too.
extern "C" __attribute__( ( visibility( "default" ) ) ) int renameat2(
	int nFromFolder, const char *pFrom, int nToFolder, const char *pTo, unsigned int nFlags ) noexcept
{
	g_nRenames++;
	if ( g_nRenameError != 0 )
	{
		errno = g_nRenameError;
		return -1;
	}
	return static_cast<int>( syscall( SYS_renameat2, nFromFolder, pFrom, nToFolder, pTo, nFlags ) );
}

namespace
{
namespace fs = std::filesystem;
using testing::HasSubstr;

class KeyValuesRename : public testing::TestWithParam<int>
{
protected:
	void SetUp() override
	{
		std::string name = testing::TempDir() + "rename-XXXXXX";
		ASSERT_NE( mkdtemp( name.data() ), nullptr );
		m_Folder = name;
		m_Path = m_Folder / "settings.txt";
		std::ofstream( m_Path ) << "}";
		g_nRenames = 0;
		g_nRenameError = GetParam();
	}
	void TearDown() override
	{
		g_nRenameError = 0;
		fs::remove_all( m_Folder );
	}
	// The warning.
	std::string LoadBroken()
	{
		CExpectWarnings warnings;
		KeyValues tree( "root" );
		EXPECT_EQ( tree.LoadSettingsFile( m_Path.c_str() ), KeyValues::LoadResult::Unreadable );
		const auto texts = warnings.Take();
		EXPECT_EQ( texts.size(), 1u );
		EXPECT_GT( g_nRenames, 0 ) << "the test does not see the call";
		return texts.empty() ? std::string() : texts.front();
	}
	static std::string Read( const fs::path &path )
	{
		std::ifstream file( path );
		return { std::istreambuf_iterator<char>( file ), {} };
	}

	fs::path m_Folder;
	fs::path m_Path;
};

class KeyValuesRenameInSteps : public KeyValuesRename
{
};
INSTANTIATE_TEST_SUITE_P( Errors, KeyValuesRenameInSteps, testing::Values( EINVAL, ENOSYS ) );

TEST_P( KeyValuesRenameInSteps, ABrokenFileIsKeptAside )
{
	EXPECT_THAT( LoadBroken(), HasSubstr( "kept as " + m_Path.string() + ".broken-1" ) );
	EXPECT_FALSE( fs::exists( m_Path ) );
	EXPECT_EQ( Read( m_Path.string() + ".broken-1" ), "}" );
}

TEST_P( KeyValuesRenameInSteps, ABrokenFileNeverReplacesOneThatWasKept )
{
	std::ofstream( m_Path.string() + ".broken-1" ) << "first";
	fs::create_symlink( "nowhere", m_Path.string() + ".broken-2" );
	EXPECT_THAT( LoadBroken(), HasSubstr( "kept as " + m_Path.string() + ".broken-3" ) );
	EXPECT_EQ( Read( m_Path.string() + ".broken-1" ), "first" );
	EXPECT_TRUE( fs::is_symlink( m_Path.string() + ".broken-2" ) );
	EXPECT_EQ( Read( m_Path.string() + ".broken-3" ), "}" );
}

class KeyValuesRenameRefused : public KeyValuesRename
{
};
INSTANTIATE_TEST_SUITE_P( Errors, KeyValuesRenameRefused, testing::Values( EACCES, EROFS ) );

TEST_P( KeyValuesRenameRefused, ABrokenFileStaysWhereItIs )
{
	LoadBroken();
	EXPECT_EQ( Read( m_Path ), "}" );
	EXPECT_FALSE( fs::exists( m_Path.string() + ".broken-1" ) );
}
} // namespace
