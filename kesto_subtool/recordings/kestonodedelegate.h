// Paints the cells of the player's tree.
#pragma once

#include <QStyledItemDelegate>

// Keeps a name on its line, whatever characters are in it; the item's own text stays the name.
class CQKestoNodeDelegate final : public QStyledItemDelegate
{
	Q_OBJECT

public:
	using QStyledItemDelegate::QStyledItemDelegate;

	QString displayText( const QVariant &value, const QLocale &locale ) const override;
};
