* A workshop makes four products out of three materials. Product B is made in lots of ten at least if it is made at
* all, which the row LOT says; what is left of the wood must be worth 20 at most, and 5 is paid for it anyway.
NAME          WORKSHOP
OBJSENSE
    MAX
ROWS
 N  PROFIT
 L  WOOD
 G  HOURS
 E  PAIRS
 G  LOT
COLUMNS
    M1        'MARKER'                 'INTORG'
    A         PROFIT             7.5   WOOD                3
    A         HOURS                2   PAIRS               1
    B         PROFIT            4.25   WOOD                2
    B         HOURS                1   LOT                 1
    C         PROFIT               9   WOOD              4.5
    C         HOURS                3   PAIRS              -1
    D         PROFIT               3   WOOD             1.25
    MADEB     LOT                -10   PROFIT             -8
    M2        'MARKER'                 'INTEND'
RHS
    RHS       PROFIT              -5   WOOD               90
    RHS       HOURS               20   PAIRS              -2
RANGES
    RNG       WOOD                20   PAIRS               3
BOUNDS
 UP BND       A                   12
 LO BND       B                   -1
 UP BND       B                   25
 UP BND       C                    9
 LO BND       D                    4
 UP BND       D                   16
 BV BND       MADEB
ENDATA
