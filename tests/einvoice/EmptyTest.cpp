// Placeholder while the suite is written.
