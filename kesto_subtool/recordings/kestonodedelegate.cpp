#include "recordings/kestonodedelegate.h"

#include "recordings/kestotexts.h"

QString CQKestoNodeDelegate::displayText( const QVariant &value, const QLocale & ) const
{
	return OneLineText( value.toString() ); // all cells are texts
}
