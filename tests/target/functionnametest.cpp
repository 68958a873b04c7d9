#include <gtest/gtest.h>

#include "target/src/registry.h"

namespace
{
using showbudget::PlainFunctionName;

TEST( FunctionName, LosesReturnTypeAndParameters )
{
	EXPECT_EQ( PlainFunctionName( "void Step()" ), "Step" );
	EXPECT_EQ( PlainFunctionName( "int main(int, char**)" ), "main" );
	EXPECT_EQ( PlainFunctionName( "const char* world::Name(const Body&)" ), "world::Name" );
	EXPECT_EQ( PlainFunctionName( "virtual std::map<int, std::string> world::CBody::Step(float) const" ),
		"world::CBody::Step" );
	EXPECT_EQ( PlainFunctionName( "world::CBody::CBody(int)" ), "world::CBody::CBody" );
	EXPECT_EQ( PlainFunctionName( "world::CBody::~CBody()" ), "world::CBody::~CBody" );
}

TEST( FunctionName, KeepsTheArgumentsOfTemplates )
{
	EXPECT_EQ( PlainFunctionName( "void CList<T>::Add(T) [with T = int]" ), "CList<T>::Add" );
	EXPECT_EQ( PlainFunctionName( "void CMap<int, float>::Add(int, float)" ), "CMap<int, float>::Add" );
}

TEST( FunctionName, KeepsAnonymousNamespaces )
{
	EXPECT_EQ( PlainFunctionName( "void (anonymous namespace)::Step(int)" ), "(anonymous namespace)::Step" );
	EXPECT_EQ( PlainFunctionName( "int {anonymous}::Step(int)" ), "{anonymous}::Step" );
}

TEST( FunctionName, KeepsOperators )
{
	EXPECT_EQ( PlainFunctionName( "bool CBody::operator<(const CBody&) const" ), "CBody::operator<" );
	EXPECT_EQ( PlainFunctionName( "CBody::operator bool() const" ), "CBody::operator bool" );
}

TEST( FunctionName, LeavesWhatIsNoFunction )
{
	EXPECT_EQ( PlainFunctionName( "top level" ), "top level" );
	EXPECT_EQ( PlainFunctionName( "" ), "" );
}
} // namespace
