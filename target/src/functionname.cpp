#include <string_view>

#include "registry.h"

namespace showbudget
{
namespace
{
// The position of the parenthesis that opens the parameter list: the last one outside of brackets and of the suffix
// that templates get. npos when there is none.
size_t FindParameters( std::string_view text )
{
	int nDepth = 0;
	for ( size_t i = text.size(); i-- > 0; )
	{
		const char c = text[i];
		if ( c == ')' || c == ']' || c == '}' )
			nDepth++;
		else if ( ( c == '(' || c == '[' || c == '{' ) && --nDepth == 0 && c == '(' )
			return i;
	}
	return std::string_view::npos;
}

// Where the name that ends at the end of `text` begins: after the last blank outside of brackets.
size_t FindName( std::string_view text )
{
	int nDepth = 0;
	for ( size_t i = text.size(); i-- > 0; )
	{
		const char c = text[i];
		if ( c == ')' || c == '>' || c == ']' || c == '}' )
			nDepth++;
		else if ( c == '(' || c == '<' || c == '[' || c == '{' )
			nDepth--;
		else if ( nDepth <= 0 && ( c == ' ' || c == '*' || c == '&' ) )
			return i + 1;
	}
	return 0;
}
} // namespace

std::string_view PlainFunctionName( std::string_view pretty )
{
	constexpr std::string_view OPERATOR = "operator";
	const size_t nParameters = FindParameters( pretty );
	if ( nParameters == std::string_view::npos )
		return pretty;
	const std::string_view before = pretty.substr( 0, nParameters );
	// The marks of an operator's name ("operator<", "operator bool") are no brackets and separate nothing.
	const size_t nOperator = before.rfind( OPERATOR );
	const bool bOperator = nOperator != std::string_view::npos &&
						   ( nOperator == 0 || before[nOperator - 1] == ':' || before[nOperator - 1] == ' ' );
	return before.substr( FindName( before.substr( 0, bOperator ? nOperator : before.size() ) ) );
}
} // namespace showbudget
