// The ring store of budget samples.
