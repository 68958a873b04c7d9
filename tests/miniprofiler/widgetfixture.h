// The panel with rows of a made-up engine, and ways to its controls.
#pragma once

#include <gmock/gmock.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTimer>
#include <stdexcept>
#include <string>
#include <string_view>

#include "framebuilder.h"
#include "keel0/platform.h"
#include "miniprofiler/miniprofilerbardelegate.h"
#include "miniprofiler/miniprofilermenu.h"
#include "miniprofiler/miniprofilerrowitem.h"
#include "miniprofiler/miniprofilertreewidget.h"
#include "miniprofiler/miniprofilerwidget.h"
#include "support/fakeclock.h"

inline std::string g_Clipboard; // what the panel has copied

class MiniProfilerWidget : public testing::Test
{
protected:
	MiniProfilerWidget()
	{
		g_Clipboard = "untouched";
		Plat_SetClipboardSink( []( const char *pText ) { g_Clipboard = pText; } );
		m_Panel.resize( 900, 500 );
	}
	~MiniProfilerWidget() override { Plat_SetClipboardSink( nullptr ); }

	// Names "A" on with the ids 16, 32 …; times are 1000, 2000 … ticks, so the last is the heaviest.
	void Receive( int nRecords, std::string_view budget = "Physics" )
	{
		CFrameBuilder data, names;
		data.BeginData( true, 99, static_cast<uint32_t>( nRecords ) );
		names.BeginNames( 1000000, nRecords );
		for ( int i = 0; i < nRecords; i++ )
		{
			const auto nNumber = static_cast<uint64_t>( i + 1 );
			data.Entry( nNumber * 16, 0, nNumber * 1000, 1 );
			names.Name( nNumber * 16, 0, NameOf( i ),
				std::string( budget ) + "\nCFoo::f" + std::to_string( i ) + "\nC:\\Src\\x.cpp\n1\ndemo\n" );
		}
		m_Panel.ReceiveChunk( names.End().Payload() );
		m_Panel.ReceiveChunk( data.End().Payload() );
		m_Panel.RegenerateDataView();
	}
	static std::string NameOf( int nIndex )
	{
		const auto nLetter = static_cast<char>( 'A' + nIndex % 26 );
		return std::string( static_cast<size_t>( nIndex / 26 + 1 ), nLetter );
	}
	void SetTicks( std::initializer_list<std::pair<uint64_t, uint64_t>> ticks )
	{
		CFrameBuilder data;
		data.BeginData( true );
		for ( const auto &[nId, nTicks] : ticks )
			data.Entry( nId, 0, nTicks, 1 );
		m_Panel.ReceiveChunk( data.End().Payload() );
	}

	QStringList TopLevel() const
	{
		QStringList names;
		for ( int i = 0; i < m_Tree.topLevelItemCount(); i++ )
			names << m_Tree.topLevelItem( i )->text( 0 );
		return names;
	}
	QTreeWidgetItem *Item( const QString &name ) const
	{
		const auto items = m_Tree.findItems( name, Qt::MatchExactly | Qt::MatchRecursive );
		return items.isEmpty() ? nullptr : items.first();
	}
	QStringList Selected() const
	{
		QStringList names;
		for ( const CMiniProfilerRow *pRow : m_Tree.SelectedRows() )
			names << pRow->Name();
		return names;
	}
	QAction *Action( const QString &text ) const
	{
		for ( QAction *pAction : m_Panel.findChildren<QAction *>() )
			if ( pAction->text() == text )
				return pAction;
		ADD_FAILURE() << "no action " << text.toStdString();
		return nullptr;
	}
	QComboBox &Combo( const QString &firstText ) const
	{
		for ( QComboBox *pCombo : m_Panel.findChildren<QComboBox *>() )
			if ( pCombo->itemText( 0 ) == firstText )
				return *pCombo;
		throw std::runtime_error( "no combo box" );
	}
	QComboBox &GroupMode() const { return Combo( "No Group Hierarchy" ); }
	QComboBox &LeafMode() const { return Combo( "No Leaf Hierarchy" ); }
	QCheckBox &Box( const QString &text ) const
	{
		for ( QCheckBox *pBox : m_Panel.findChildren<QCheckBox *>() )
			if ( pBox->text() == text )
				return *pBox;
		throw std::runtime_error( "no check box" );
	}
	void Search( const char *pText )
	{
		m_Search.clear();
		QTest::keyClicks( &m_Search, pText );
	}
	QLabel *LabelWith( const QString &text ) const
	{
		for ( QLabel *pLabel : m_Panel.findChildren<QLabel *>() )
			if ( pLabel->text().contains( text ) )
				return pLabel;
		return nullptr;
	}

	CFakeClock m_Clock;
	CQMiniProfilerWidget m_Panel{ nullptr };
	CQMiniProfilerTreeWidget &m_Tree = *m_Panel.findChild<CQMiniProfilerTreeWidget *>();
	CQMiniProfilerMenu &m_Menu = *m_Panel.findChild<CQMiniProfilerMenu *>();
	CQMiniProfilerBarDelegate &m_Delegate = *m_Panel.findChild<CQMiniProfilerBarDelegate *>();
	QTimer &m_Timer = *m_Panel.findChild<QTimer *>( "RegenerationTimer" );
	QLineEdit &m_Search = *m_Panel.findChild<QLineEdit *>();
};
