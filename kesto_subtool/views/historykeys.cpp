#include "views/historykeys.h"

#include <QCoreApplication>

using Kind = HistoryCommand::Kind;

static std::optional<HistoryCommand> ArrowCommand( int nDirection, Qt::KeyboardModifiers modifiers )
{
	if ( modifiers == Qt::ControlModifier )
		return HistoryCommand{ Kind::StepScreen, nDirection };
	if ( modifiers == Qt::ShiftModifier )
		return HistoryCommand{ Kind::Step, 10 * nDirection };
	if ( modifiers == Qt::NoModifier )
		return HistoryCommand{ Kind::Step, nDirection };
	return std::nullopt;
}

std::optional<HistoryCommand> HistoryCommandOfKey( int nKey, Qt::KeyboardModifiers modifiers )
{
	modifiers &= ~Qt::KeyboardModifiers( Qt::KeypadModifier );
	if ( nKey == Qt::Key_Left || nKey == Qt::Key_Right )
		return ArrowCommand( nKey == Qt::Key_Left ? -1 : 1, modifiers );
	if ( nKey == Qt::Key_N && modifiers == Qt::ShiftModifier )
		return HistoryCommand{ Kind::PreviousSlow };
	if ( modifiers != Qt::NoModifier )
		return std::nullopt;
	switch ( nKey )
	{
		case Qt::Key_Home:
			return HistoryCommand{ Kind::Oldest };
		case Qt::Key_End:
			return HistoryCommand{ Kind::Newest };
		case Qt::Key_N:
			return HistoryCommand{ Kind::NextSlow };
		case Qt::Key_M:
			return HistoryCommand{ Kind::Slowest };
		case Qt::Key_Space:
			return HistoryCommand{ Kind::ToggleSampling };
		default:
			return std::nullopt;
	}
}

QString HistoryKeysText()
{
	return QCoreApplication::translate( "HistoryKeys",
		"Space: stop or start sampling\n"
		"While stopped:\n"
		"Left, Right: previous or next frame (Shift: ten, Ctrl: one screen)\n"
		"Home, End: oldest or newest frame\n"
		"N, Shift+N: next or previous frame slower than the lower threshold\n"
		"M: slowest frame" );
}
