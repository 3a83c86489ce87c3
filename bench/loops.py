# bench/loops.py: loops of other languages, as peers of the loops of hvm's scripts

import ctypes

import numpy

COLUMNS = 10


def matrix(n):
    return numpy.zeros((n // COLUMNS, COLUMNS))


def sum_of_elements(a):
    """Adds the elements of a matrix one by one, as a script does."""
    total = 0.0
    rows, columns = a.shape
    for i in range(rows):
        for j in range(columns):
            total += a[i, j]
    return total


class LuaError(Exception):
    """The chunk cannot be read, or it failed."""


class Lua:
    """A chunk of Lua 5.4, run in this process through the library's C interface."""

    def __init__(self, chunk):
        self.library = ctypes.CDLL("liblua5.4.so.0")
        self.library.luaL_newstate.restype = ctypes.c_void_p
        self.library.lua_tolstring.restype = ctypes.c_char_p
        self.state = ctypes.c_void_p(self.library.luaL_newstate())
        self.library.luaL_openlibs(self.state)
        self.check(self.library.luaL_loadstring(self.state, chunk.encode()))

    def check(self, status):
        if status != 0:
            raise LuaError(self.library.lua_tolstring(self.state, -1, None).decode())

    def run(self):
        """Runs the chunk, which stays loaded."""
        self.library.lua_pushvalue(self.state, -1)
        self.check(self.library.lua_pcallk(self.state, 0, 0, 0, ctypes.c_ssize_t(0), None))
