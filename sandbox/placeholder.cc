// Replaced by the sandbox service.
