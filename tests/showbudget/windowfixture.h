// A Show Budget window between a fake connection and a fake owner.
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QDockWidget>
#include <QLabel>
#include <QMenu>
#include <QStatusBar>
#include <memory>
#include <string>
#include <vector>

#include "keel0/keyvalues.h"
#include "showbudget/budgetpayloads.h"
#include "showbudget/budgetwidget.h"
#include "showbudget/ibudgetwindowowner.h"
#include "support/countingallocator.h"
#include "support/fakeclock.h"
#include "support/fakeconnection.h"
#include "support/fakehost.h"

// Every block that crosses to the host must be freed by the end of a test.
class WindowTest
	: public testing::Test
	, public IBudgetWindowOwner
{
protected:
	KeyValues *GetSettings() override { return m_pSettings.get(); }
	const ITesselHost &GetHost() const override { return m_Host; }

	// Makes the window as the sub-tool does.
	CQBudgetWidget &MakeWindow()
	{
		m_pWindow = std::make_unique<CQBudgetWidget>( m_Connection, *this );
		m_pWindow->OnConnectionStateChanged();
		return *m_pWindow;
	}

	// A window that samples two budgets, "Render" and "Audio".
	CQBudgetWidget &MakeRunningWindow()
	{
		MakeWindow().StartSampling();
		SendCategories( { { "Render", 10, 20, 30 }, { "Audio", 40, 50, 60 } } );
		m_Connection.TakeSent();
		return *m_pWindow;
	}

	void SendCategories( const std::vector<TestCategory> &categories )
	{
		EXPECT_TRUE( m_Connection.Deliver( CHUNK_PCAT, CategoriesPayload( categories ) ) );
	}

	void SendSample( const std::vector<uint32_t> &values, float flFrameRate = 60.0f, uint32_t nMark = 1 )
	{
		EXPECT_TRUE( m_Connection.Deliver( CHUNK_PCPU, SamplePayload( values, flFrameRate, nMark ) ) );
	}

	QAction *Action( const char *pText ) const { return FindByText<QAction>( pText, &QAction::text ); }
	QDockWidget *Dock( const char *pTitle ) const { return FindByText<QDockWidget>( pTitle, &QWidget::windowTitle ); }

	// The texts of the status bar's labels from left to right, without the cursor's.
	std::vector<std::string> StatusTexts() const
	{
		std::vector<std::string> texts;
		for ( const QObject *pChild : m_pWindow->statusBar()->children() )
		{
			const auto *pLabel = qobject_cast<const QLabel *>( pChild );
			if ( pLabel && !pLabel->text().startsWith( " Cursor" ) && !pLabel->text().isEmpty() )
				texts.push_back( pLabel->text().toStdString() );
		}
		return texts;
	}

	CCountingAllocator m_Allocator;
	CFakeClock m_Clock;
	CFakeHost m_Host;
	CFakeConnection m_Connection;
	std::unique_ptr<KeyValues> m_pSettings = std::make_unique<KeyValues>( "Settings" );
	std::unique_ptr<CQBudgetWidget> m_pWindow;

private:
	template <typename T, typename Getter>
	T *FindByText( const char *pText, Getter getText ) const
	{
		for ( T *pObject : m_pWindow->findChildren<T *>() )
		{
			if ( ( pObject->*getText )() == pText )
				return pObject;
		}
		ADD_FAILURE() << "the window has no \"" << pText << '"';
		return nullptr;
	}
};

inline CFakeConnection::Chunk StartChunk()
{
	return { CHUNK_KSTO, 2, { 1, 0, 0 } };
}

inline CFakeConnection::Chunk StopChunk()
{
	return { CHUNK_KSTO, 2, { 0, 0, 0 } };
}

inline CFakeConnection::Chunk MiniProfilerChunk( bool bWanted )
{
	return { CHUNK_KMPC, 2, { 0, 0, 0, 0, static_cast<uint8_t>( bWanted ? 1 : 0 ), 0, 0, 0 } };
}
