// The interface registration list.
