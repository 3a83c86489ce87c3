// cmake/test_headers.cpp: nothing but the headers that tests share
