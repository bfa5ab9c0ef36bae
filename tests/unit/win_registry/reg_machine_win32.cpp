// The machine helper now lives in tests/support (dsl_test_support).
