#include "recordings/kestonodedelegate.h"

#include "text/showntext.h"

QString CQKestoNodeDelegate::displayText( const QVariant &value, const QLocale & ) const
{
	return ShownText( value.toString() ); // all cells are texts
}
