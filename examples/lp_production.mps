* A week of furniture production: three products share wood, labour and finishing time;
* the plan maximises the profit (solve with QNUM_LP_MAXIMIZE). Market limits are bounds,
* and at least half as many shelves as tables are made (SHELFMIX).
NAME          FURNITURE
ROWS
 N  PROFIT
 L  WOOD
 L  LABOUR
 L  FINISH
 G  SHELFMIX
COLUMNS
    CHAIR     PROFIT              45   WOOD                 5
    CHAIR     LABOUR              10   FINISH               2
    TABLE     PROFIT              80   WOOD                20
    TABLE     LABOUR              15   FINISH               5
    TABLE     SHELFMIX          -0.5
    SHELF     PROFIT              60   WOOD                10
    SHELF     LABOUR              12   FINISH               4
    SHELF     SHELFMIX             1
RHS
    LIMITS    WOOD               400   LABOUR             450
    LIMITS    FINISH             120
BOUNDS
 UP MARKET    CHAIR               30
 UP MARKET    TABLE               15
ENDATA
