	  Then = 1
