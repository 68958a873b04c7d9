#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "keel0/keyvalues.h"
#include "support/logguard.h"

namespace
{
namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using LoadResult = KeyValues::LoadResult;

// While one lives the process has no rights of an administrator, who may write everywhere.
class CWithoutAdministrator
{
public:
	CWithoutAdministrator()
		: m_nBefore( geteuid() )
	{
		constexpr uid_t NOBODY = 65534;
		if ( m_nBefore == 0 && seteuid( NOBODY ) != 0 )
			ADD_FAILURE() << "the rights could not be dropped";
	}
	~CWithoutAdministrator()
	{
		if ( m_nBefore == 0 && seteuid( 0 ) != 0 )
			std::abort();
	}
	CWithoutAdministrator( const CWithoutAdministrator & ) = delete;
	CWithoutAdministrator &operator=( const CWithoutAdministrator & ) = delete;

private:
	uid_t m_nBefore;
};

class KeyValuesFile : public testing::Test
{
protected:
	void SetUp() override
	{
		std::string name = testing::TempDir() + "keyvalues-XXXXXX";
		ASSERT_NE( mkdtemp( name.data() ), nullptr );
		m_Folder = name;
		m_Path = m_Folder / "settings.txt";
		fs::permissions( m_Folder, fs::perms::all );
	}
	void TearDown() override
	{
		fs::permissions( m_Folder, fs::perms::all );
		fs::remove_all( m_Folder );
	}

	void Write( const fs::path &path, const std::string &text ) { std::ofstream( path, std::ios::binary ) << text; }
	std::string Read( const fs::path &path )
	{
		std::ifstream file( path, std::ios::binary );
		return { std::istreambuf_iterator<char>( file ), {} };
	}
	std::vector<std::string> Names() const
	{
		std::vector<std::string> names;
		for ( const auto &entry : fs::directory_iterator( m_Folder ) )
			names.push_back( entry.path().filename() );
		return names;
	}
	static mode_t ModeOf( const fs::path &path )
	{
		struct stat status
		{
		};
		return stat( path.c_str(), &status ) == 0 ? status.st_mode & 07777 : 0;
	}
	std::string LoadProblem( const fs::path &path )
	{
		KeyValues tree( "old" );
		tree.SetInt( "kept", 1 );
		KeyValues::ParseError error;
		EXPECT_EQ( tree.LoadFromFile( path.c_str(), &error ), LoadResult::Unreadable );
		EXPECT_EQ( error.m_nLine, 0u );
		EXPECT_EQ( tree.GetInt( "kept" ), 1 );
		return error.m_Message;
	}
	std::string SaveProblem( const fs::path &path )
	{
		KeyValues::ParseError error;
		EXPECT_FALSE( m_Tree.SaveToFile( path.c_str(), &error ) );
		EXPECT_FALSE( m_Tree.SaveToFile( path.c_str() ) );
		EXPECT_EQ( error.m_nLine, 0u );
		return error.m_Message;
	}

	static constexpr fs::perms READ_ONLY = fs::perms( 0555 );

	fs::path m_Folder;
	fs::path m_Path;
	KeyValues m_Tree{ "root" };
};

TEST_F( KeyValuesFile, IsLoadedAsItWasSaved )
{
	m_Tree.SetString( "name", "v\xC3\xA4lue\n" );
	m_Tree.FindKey( "sub", true )->SetFloat( "f", 0.1f );
	ASSERT_TRUE( m_Tree.SaveToFile( m_Path.c_str() ) );
	EXPECT_EQ( Read( m_Path ), m_Tree.SaveToBuffer() );
	KeyValues loaded( "" );
	EXPECT_EQ( loaded.LoadFromFile( m_Path.c_str() ), LoadResult::Loaded );
	EXPECT_EQ( loaded.SaveToBuffer(), m_Tree.SaveToBuffer() );
	EXPECT_THAT( Names(), ElementsAre( "settings.txt" ) );
}

TEST_F( KeyValuesFile, ReplacesALongerOneWhole )
{
	Write( m_Path, std::string( 100'000, 'x' ) );
	ASSERT_TRUE( m_Tree.SaveToFile( m_Path.c_str() ) );
	EXPECT_EQ( Read( m_Path ), "\"root\"\n{\n}\n" );
	EXPECT_THAT( Names(), ElementsAre( "settings.txt" ) );
}

TEST_F( KeyValuesFile, AReaderThatHasTheOldFileOpenStillReadsItWhole )
{
	Write( m_Path, "old text" );
	std::ifstream reader( m_Path );
	ASSERT_TRUE( m_Tree.SaveToFile( m_Path.c_str() ) );
	EXPECT_EQ( std::string( std::istreambuf_iterator<char>( reader ), {} ), "old text" );
}

TEST_F( KeyValuesFile, KeepsTheModeOfTheOldFileAndElseTheUsualOne )
{
	const mode_t nMaskBefore = umask( 027 );
	ASSERT_TRUE( m_Tree.SaveToFile( m_Path.c_str() ) );
	EXPECT_EQ( ModeOf( m_Path ), 0640u );
	ASSERT_EQ( chmod( m_Path.c_str(), 0606 ), 0 );
	ASSERT_TRUE( m_Tree.SaveToFile( m_Path.c_str() ) );
	EXPECT_EQ( ModeOf( m_Path ), 0606u );
	umask( nMaskBefore );
}

TEST_F( KeyValuesFile, IsReplacedBehindALink )
{
	fs::create_directory( m_Folder / "real" );
	Write( m_Folder / "real/file", "old" );
	fs::create_symlink( "real/file", m_Path );
	ASSERT_TRUE( m_Tree.SaveToFile( m_Path.c_str() ) );
	EXPECT_TRUE( fs::is_symlink( m_Path ) );
	EXPECT_EQ( Read( m_Folder / "real/file" ), m_Tree.SaveToBuffer() );
}

TEST_F( KeyValuesFile, MayBeNamedRelativeToTheWorkingFolder )
{
	const fs::path before = fs::current_path();
	fs::current_path( m_Folder );
	EXPECT_TRUE( m_Tree.SaveToFile( "new.txt" ) );
	KeyValues loaded( "" );
	EXPECT_EQ( loaded.LoadFromFile( "new.txt" ), LoadResult::Loaded );
	fs::current_path( before );
	EXPECT_THAT( Names(), ElementsAre( "new.txt" ) );
}

TEST_F( KeyValuesFile, ThatIsMissingLeavesTheTree )
{
	m_Tree.SetInt( "kept", 1 );
	KeyValues::ParseError error;
	EXPECT_EQ( m_Tree.LoadFromFile( m_Path.c_str(), &error ), LoadResult::NoFile );
	EXPECT_EQ( m_Tree.LoadFromFile( ( m_Folder / "none/file" ).c_str(), &error ), LoadResult::NoFile );
	EXPECT_EQ( error.m_Message, "" );
	EXPECT_EQ( m_Tree.GetInt( "kept" ), 1 );
}

TEST_F( KeyValuesFile, WithABrokenTextLeavesTheTreeAndSaysWhere )
{
	Write( m_Path, "root\n{\n\ta 1\n\tb }\n" );
	m_Tree.SetInt( "kept", 1 );
	KeyValues::ParseError error;
	EXPECT_EQ( m_Tree.LoadFromFile( m_Path.c_str(), &error ), LoadResult::Unreadable );
	EXPECT_EQ( error.m_nLine, 4u );
	EXPECT_EQ( error.m_nColumn, 4u );
	EXPECT_EQ( error.m_Message, "expected a value or '{', found '}'" );
	EXPECT_EQ( m_Tree.GetInt( "kept" ), 1 );
	EXPECT_EQ( m_Tree.LoadFromFile( m_Path.c_str() ), LoadResult::Unreadable );
}

TEST_F( KeyValuesFile, ThatIsNoRegularFileIsRefusedWithoutWaiting )
{
	EXPECT_EQ( LoadProblem( m_Folder ), "this is not a regular file" );
	ASSERT_EQ( mkfifo( m_Path.c_str(), 0600 ), 0 );
	EXPECT_EQ( LoadProblem( m_Path ), "this is not a regular file" );
}

TEST_F( KeyValuesFile, ThatIsTooLongIsRefused )
{
	Write( m_Path, "n v" );
	fs::resize_file( m_Path, ( uintmax_t{ 64 } << 20 ) + 1 );
	EXPECT_EQ( LoadProblem( m_Path ), "the text is longer than 67108864 bytes" );
}

TEST_F( KeyValuesFile, ThatMayNotBeReadIsUnreadable )
{
	Write( m_Path, "n v" );
	fs::permissions( m_Path, fs::perms::none );
	const CWithoutAdministrator rights;
	EXPECT_EQ( LoadProblem( m_Path ), "it cannot be opened: Permission denied" );
}

TEST_F( KeyValuesFile, CannotBeSavedInAFolderThatIsMissingOrMayNotBeWritten )
{
	EXPECT_THAT( SaveProblem( m_Folder / "none/file" ), EndsWith( " cannot be made: No such file or directory" ) );
	Write( m_Path, "old" );
	EXPECT_THAT( SaveProblem( m_Path / "file" ), EndsWith( " cannot be made: Not a directory" ) );

	fs::permissions( m_Folder, READ_ONLY );
	{
		const CWithoutAdministrator rights;
		EXPECT_THAT(
			SaveProblem( m_Path ), AllOf( StartsWith( m_Path ), EndsWith( " cannot be made: Permission denied" ) ) );
	}
	EXPECT_EQ( Read( m_Path ), "old" );
	EXPECT_THAT( Names(), ElementsAre( "settings.txt" ) );
}

TEST_F( KeyValuesFile, LeavesTheOldOneWhenTheNewOneCannotBeWritten )
{
	Write( m_Path, "old" );
	m_Tree.SetString( "long", std::string( 10'000, 'x' ).c_str() );
	rlimit before{};
	ASSERT_EQ( getrlimit( RLIMIT_FSIZE, &before ), 0 );
	rlimit small = before;
	small.rlim_cur = 4096; // as a full disk would, but writing ends with another error
	const auto pSignalBefore = std::signal( SIGXFSZ, SIG_IGN );
	ASSERT_EQ( setrlimit( RLIMIT_FSIZE, &small ), 0 );
	const std::string problem = SaveProblem( m_Path );
	ASSERT_EQ( setrlimit( RLIMIT_FSIZE, &before ), 0 );
	std::signal( SIGXFSZ, pSignalBefore );
	EXPECT_THAT( problem, EndsWith( " cannot be written: File too large" ) );
	EXPECT_EQ( Read( m_Path ), "old" );
	EXPECT_THAT( Names(), ElementsAre( "settings.txt" ) );
}

TEST_F( KeyValuesFile, LeavesNothingBehindWhenItCannotBeRenamed )
{
	fs::create_directory( m_Path );
	EXPECT_THAT( SaveProblem( m_Path ), EndsWith( " cannot be renamed to " + m_Path.string() + ": Is a directory" ) );
	EXPECT_THAT( Names(), ElementsAre( "settings.txt" ) );
}

TEST_F( KeyValuesFile, IsNotSavedWhenItCouldNotBeLoaded )
{
	KeyValues *pDeepest = &m_Tree; // the first of 64 levels
	for ( int i = 1; i < 64; i++ )
		pDeepest = pDeepest->FindKey( "n", true );
	EXPECT_TRUE( m_Tree.SaveToFile( m_Path.c_str() ) );
	KeyValues loaded( "" );
	EXPECT_EQ( loaded.LoadFromFile( m_Path.c_str() ), LoadResult::Loaded );

	pDeepest->FindKey( "n", true );
	EXPECT_EQ( SaveProblem( m_Path ), "the tree has more than 64 levels" );
	EXPECT_EQ( loaded.LoadFromFile( m_Path.c_str() ), LoadResult::Loaded );
}

TEST_F( KeyValuesFile, IsNotSavedWithMoreEntriesThanAreLoaded )
{
	Write( m_Path, "old" );
	KeyValues many( "many" );
	for ( int i = 0; i < 1000; i++ ) // with the blocks themselves 1,000 too many
	{
		auto *pBlock = new KeyValues( ( "block " + std::to_string( i ) ).c_str() );
		for ( int j = 0; j < 500; j++ )
			pBlock->SetInt( std::to_string( j ).c_str(), j );
		many.AddSubTree( pBlock );
	}
	KeyValues::ParseError error;
	EXPECT_FALSE( many.SaveToFile( m_Path.c_str(), &error ) );
	EXPECT_EQ( error.m_Message, "the tree has more than 500000 entries" );
	EXPECT_EQ( Read( m_Path ), "old" );
	many.RemoveKey( "block 0" ); // and its 500
	many.RemoveKey( "block 1" );
	EXPECT_TRUE( many.SaveToFile( m_Path.c_str(), &error ) );
	EXPECT_EQ( m_Tree.LoadFromFile( m_Path.c_str() ), LoadResult::Loaded );
}

class SettingsFile : public KeyValuesFile
{
protected:
	// Loads m_Path, which must be broken; returns what it was kept as.
	std::string KeepBroken( const std::string &expectedWarning )
	{
		CExpectWarnings warnings;
		std::string keptAs;
		EXPECT_EQ( m_Tree.LoadSettingsFile( m_Path.c_str(), &m_Error, &keptAs ), LoadResult::Unreadable );
		EXPECT_THAT( warnings.Take(), ElementsAre( expectedWarning ) );
		return keptAs;
	}

	KeyValues::ParseError m_Error;
};

TEST_F( SettingsFile, IsLoadedWithoutAWordWhenItIsRightOrMissing )
{
	std::string keptAs = "before";
	EXPECT_EQ( m_Tree.LoadSettingsFile( m_Path.c_str(), &m_Error, &keptAs ), LoadResult::NoFile );
	Write( m_Path, "n { a 5 }" );
	EXPECT_EQ( m_Tree.LoadSettingsFile( m_Path.c_str(), &m_Error, &keptAs ), LoadResult::Loaded );
	EXPECT_EQ( m_Tree.GetInt( "a" ), 5 );
	EXPECT_EQ( keptAs, "" ) << "nothing was kept aside";
	EXPECT_THAT( Names(), ElementsAre( "settings.txt" ) );
}

TEST_F( SettingsFile, ThatIsBrokenIsReportedAndKeptUnderANewName )
{
	const std::string broken = "root {\n a \"1 }\n";
	Write( m_Path, broken );
	m_Tree.SetInt( "kept", 1 );
	const std::string expectedName = m_Path.string() + ".broken-1";
	EXPECT_EQ( KeepBroken( "Settings file " + m_Path.string() +
						   ", line 2, column 4: the quoted text that begins here does not end on its line; kept as " +
						   expectedName + "\n" ),
		expectedName );
	EXPECT_EQ( m_Error.m_nLine, 2u );
	EXPECT_EQ( m_Error.m_nColumn, 4u );
	EXPECT_EQ( m_Tree.GetInt( "kept" ), 1 );
	EXPECT_EQ( Read( expectedName ), broken );
	EXPECT_FALSE( fs::exists( m_Path ) );

	ASSERT_TRUE( m_Tree.SaveToFile( m_Path.c_str() ) );
	EXPECT_EQ( Read( expectedName ), broken ) << "a later save overwrote what the user had";
}

TEST_F( SettingsFile, ThatIsBrokenNeverReplacesOneThatWasKept )
{
	Write( m_Folder / "settings.txt.broken-1", "first" );
	fs::create_symlink( "nowhere", m_Folder / "settings.txt.broken-2" );
	fs::create_directory( m_Folder / "settings.txt.broken-3" );
	Write( m_Path, "}" );
	CExpectWarnings warnings;
	EXPECT_EQ( m_Tree.LoadSettingsFile( m_Path.c_str() ), LoadResult::Unreadable );
	EXPECT_EQ( warnings.Take().size(), 1u );
	EXPECT_EQ( Read( m_Folder / "settings.txt.broken-1" ), "first" );
	EXPECT_TRUE( fs::is_symlink( m_Folder / "settings.txt.broken-2" ) );
	EXPECT_EQ( Read( m_Folder / "settings.txt.broken-4" ), "}" );

	Write( m_Path, "{" );
	EXPECT_EQ( m_Tree.LoadSettingsFile( m_Path.c_str() ), LoadResult::Unreadable );
	EXPECT_EQ( warnings.Take().size(), 1u );
	EXPECT_EQ( Read( m_Folder / "settings.txt.broken-4" ), "}" );
	EXPECT_EQ( Read( m_Folder / "settings.txt.broken-5" ), "{" );
}

TEST_F( SettingsFile, ThatCannotBeKeptAsideStaysWhereItIsAndIsReported )
{
	Write( m_Path, "}" );
	fs::permissions( m_Path, fs::perms::all );
	fs::permissions( m_Folder, READ_ONLY );
	{
		const CWithoutAdministrator rights;
		const std::string why = "expected a name, found '}'; the file could not be renamed: Permission denied";
		EXPECT_EQ( KeepBroken( "Settings file " + m_Path.string() + ", line 1, column 1: " + why + "\n" ), "" );
		EXPECT_EQ( m_Error.m_Message, why );
	}
	EXPECT_EQ( Read( m_Path ), "}" );
	EXPECT_THAT( Names(), ElementsAre( "settings.txt" ) );
}

TEST_F( SettingsFile, ThatIsNoFileAtAllIsKeptAsideToo )
{
	fs::create_directory( m_Path );
	Write( m_Path / "inside", "x" );
	const std::string keptAs = m_Path.string() + ".broken-1";
	EXPECT_EQ(
		KeepBroken( "Settings file " + m_Path.string() + ": this is not a regular file; kept as " + keptAs + "\n" ),
		keptAs );
	EXPECT_EQ( Read( fs::path( keptAs ) / "inside" ), "x" );
}
} // namespace
