@@ tci.main_driver.c
