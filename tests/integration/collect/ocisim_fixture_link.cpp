// The client layer's simulated-client fixture, compiled into this program as well.
#include "integration/oracle_client/ocisim_fixture.cpp"
