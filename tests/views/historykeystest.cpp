#include "views/historykeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Kind = HistoryCommand::Kind;

TEST( HistoryKeys, EachKeyHasItsCommand )
{
	struct
	{
		int m_nKey;
		Qt::KeyboardModifiers m_Modifiers;
		HistoryCommand m_Command;
	} const expectations[] = {
		{ Qt::Key_Left, Qt::NoModifier, { Kind::Step, -1 } },
		{ Qt::Key_Right, Qt::NoModifier, { Kind::Step, 1 } },
		{ Qt::Key_Left, Qt::ShiftModifier, { Kind::Step, -10 } },
		{ Qt::Key_Right, Qt::ShiftModifier, { Kind::Step, 10 } },
		{ Qt::Key_Left, Qt::ControlModifier, { Kind::StepScreen, -1 } },
		{ Qt::Key_Right, Qt::ControlModifier, { Kind::StepScreen, 1 } },
		{ Qt::Key_Home, Qt::NoModifier, { Kind::Oldest } },
		{ Qt::Key_End, Qt::NoModifier, { Kind::Newest } },
		{ Qt::Key_N, Qt::NoModifier, { Kind::NextSlow } },
		{ Qt::Key_N, Qt::ShiftModifier, { Kind::PreviousSlow } },
		{ Qt::Key_M, Qt::NoModifier, { Kind::Slowest } },
		{ Qt::Key_Space, Qt::NoModifier, { Kind::ToggleSampling } },
	};
	for ( const auto &[nKey, modifiers, command] : expectations )
	{
		EXPECT_EQ( HistoryCommandOfKey( nKey, modifiers ), command ) << nKey << " with " << modifiers;
		EXPECT_EQ( HistoryCommandOfKey( nKey, modifiers | Qt::KeypadModifier ), command ) << nKey << " of the keypad";
	}
}

TEST( HistoryKeys, OtherKeysAndModifiersAreLeftToOthers )
{
	for ( const int nKey : { Qt::Key_Up, Qt::Key_A, Qt::Key_Return, Qt::Key_Tab, Qt::Key_Escape } )
		EXPECT_FALSE( HistoryCommandOfKey( nKey, Qt::NoModifier ) ) << nKey;
	for ( const int nKey : { Qt::Key_Left, Qt::Key_Home, Qt::Key_N, Qt::Key_M, Qt::Key_Space } )
	{
		EXPECT_FALSE( HistoryCommandOfKey( nKey, Qt::AltModifier ) ) << nKey;
		EXPECT_FALSE( HistoryCommandOfKey( nKey, Qt::ControlModifier | Qt::ShiftModifier ) ) << nKey;
	}
	EXPECT_FALSE( HistoryCommandOfKey( Qt::Key_M, Qt::ControlModifier ) );
	EXPECT_FALSE( HistoryCommandOfKey( Qt::Key_Home, Qt::ShiftModifier ) );
}

TEST( HistoryKeys, TheTextNamesEveryKey )
{
	const std::string text = HistoryKeysText().toStdString();
	for ( const char *pKey : { "Left, Right", "Shift", "Ctrl", "Home, End", "N, Shift+N", "M:", "Space" } )
		EXPECT_THAT( text, testing::HasSubstr( pKey ) );
}
