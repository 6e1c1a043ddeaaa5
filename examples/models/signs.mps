NAME          SIGNS
ROWS
 N  COST
 E  SUM
 L  SPREAD
COLUMNS
    MARKER                 'MARKER'                 'INTORG'
    LOSS      COST               3   SUM                 1
    LOSS      SPREAD             1
    BELOW     COST              -1   SUM                 2
    BELOW     SPREAD            -1
    ANY       SUM                1
    MARKER                 'MARKER'                 'INTEND'
RHS
    RHS       SUM               11   SPREAD             12
BOUNDS
 LI BND       LOSS              -9
 UI BND       LOSS               9
 UP BND       BELOW             -1
 FR BND       ANY
ENDATA
